#include "bench/agent_process.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace talvik::bench {

namespace {

constexpr auto kStartLimit = std::chrono::seconds(30);
constexpr auto kPause = std::chrono::milliseconds(20);

std::string contentOf(const std::string& path)
{
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

}  // namespace

WorkFolder::WorkFolder() : path_((std::filesystem::current_path() / "talvik-bench-XXXXXX").string())
{
    if (mkdtemp(path_.data()) == nullptr) {
        throw std::runtime_error("cannot make " + path_ + ": run this where you may write");
    }
}

WorkFolder::~WorkFolder()
{
    std::error_code ignored;  // nothing depends on what stays behind
    std::filesystem::remove_all(path_, ignored);
}

unsigned freePort()
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    const int probe = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const bool bound = bind(probe, generic, size) == 0 && getsockname(probe, generic, &size) == 0;
    close(probe);
    if (!bound) {
        throw std::runtime_error("no free UDP port on the loopback");
    }
    return ntohs(address.sin_port);
}

std::string ownProgram()
{
    return std::filesystem::read_symlink("/proc/self/exe").string();
}

std::string programBeside(const std::string& name)
{
    return (std::filesystem::path(ownProgram()).parent_path() / name).string();
}

AgentProcess::AgentProcess(const std::string& program, const std::vector<std::string>& arguments,
                           const std::string& logFile)
    : logFile_(logFile)
{
    std::vector<std::string> owned = {program};
    owned.insert(owned.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    argv.reserve(owned.size() + 1);
    for (auto& argument : owned) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, logFile.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&files, STDOUT_FILENO, STDERR_FILENO);
    const int error = posix_spawn(&pid_, program.c_str(), &files, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), "cannot start " + program);
    }
}

AgentProcess::~AgentProcess()
{
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

void AgentProcess::waitUntil(const std::function<bool()>& answers) const
{
    const auto end = std::chrono::steady_clock::now() + kStartLimit;
    while (!answers()) {
        siginfo_t ended = {};
        const bool gone =
            waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED | WNOHANG | WNOWAIT) != 0 ||
            ended.si_pid != 0;
        if (gone || std::chrono::steady_clock::now() > end) {
            throw std::runtime_error("an agent under measurement does not answer; its log:\n" +
                                     contentOf(logFile_));
        }
        std::this_thread::sleep_for(kPause);
    }
}

void AgentProcess::waitUntilIdle() const
{
    constexpr auto kWatching = std::chrono::milliseconds(1);  // of timers, in a pause
    auto before = std::chrono::nanoseconds::min();
    waitUntil([&] {
        const auto now = processorTime();
        const bool isIdle = before.count() >= 0 && now - before < kWatching;
        before = now;
        return isIdle;
    });
}

std::chrono::nanoseconds AgentProcess::processorTime() const
{
    clockid_t clock = 0;
    timespec used = {};
    if (clock_getcpuclockid(pid_, &clock) != 0 || clock_gettime(clock, &used) != 0) {
        throw std::runtime_error("no processor time of an agent under measurement; its log:\n" +
                                 contentOf(logFile_));
    }
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

}  // namespace talvik::bench
