#pragma once

#include "backend/file_descriptor.h"
#include "tests/support/built_tree.h"
#include "tests/unit/backend/socket_kit.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <array>
#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

namespace talvik::test {

/// A program of this project run by a test, with whatever it prints. Killed at the end of the scope
/// if it still runs.
class Program {
public:
    /// `name` is the file's name among the built programs.
    Program(const std::string& name, const std::vector<std::string>& arguments)
    {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        output_.reset(ends[0]);
        const backend::FileDescriptor input(ends[1]);
        auto words = commandOf(name);
        words.insert(words.end(), arguments.begin(), arguments.end());
        spawn(words, input.get());
    }

    ~Program()
    {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }

    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Waits until what the program printed holds `text`; returns whether it did before its end.
    bool printed(const std::string& text)
    {
        while (text_.find(text) == std::string::npos) {
            if (!readMore()) {
                return false;
            }
        }
        return true;
    }

    void signal(int number) const { ::kill(pid_, number); }

    /// Waits for the program's end: its exit status, or minus the signal that ended it.
    int wait()
    {
        while (readMore()) {
        }
        int status = 0;
        ::waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    /// Both streams, as far as they were waited for.
    const std::string& output() const { return text_; }

private:
    void spawn(std::vector<std::string>& words, int input)
    {
        std::vector<char*> argv;
        argv.reserve(words.size() + 1);
        for (auto& word : words) {
            argv.push_back(word.data());
        }
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, input, STDOUT_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions, input, STDERR_FILENO);
        const int error =
            ::posix_spawnp(&pid_, argv.front(), &actions, nullptr, argv.data(), environ);
        ::posix_spawn_file_actions_destroy(&actions);
        if (error != 0) {
            pid_ = -1;
            throw std::runtime_error("cannot run " + words.front());
        }
    }

    /// Returns false at the end of the output.
    bool readMore()
    {
        pollfd watched{output_.get(), POLLIN, 0};
        if (::poll(&watched, 1, kWaitMs) != 1) {
            throw std::runtime_error("the program printed nothing for too long; so far: " + text_);
        }
        std::array<char, 4096> chunk;
        const auto got = ::read(output_.get(), chunk.data(), chunk.size());
        if (got > 0) {
            text_.append(chunk.data(), static_cast<std::size_t>(got));
        }
        return got > 0;
    }

    backend::FileDescriptor output_;
    pid_t pid_ = -1;
    std::string text_;
};

/// The device configuration of the source tree.
inline std::string sampleDeviceFile()
{
    return sourceFile("etc/talvik-device.xml");
}

}  // namespace talvik::test
