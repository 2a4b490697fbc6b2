// talvik-backendd: the management back end as a process of its own.
#include "backend/back_end.h"
#include "backend/backend_log.h"
#include "backend/socket_server.h"
#include "host/installation_paths.h"
#include "host/platform/ace_log_route.h"
#include "host/platform/host_log.h"
#include "host/snmp/durable_file.h"
#include "host/startup_error.h"

#include <CLI/CLI.hpp>

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

namespace {

using talvik::StartupError;

constexpr int kExitClean = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

struct Options {
    std::string socket;
    std::string device = talvik::InstallationPaths::ofThisProgram().configFile("talvik-device.xml");
    std::string stateDir = talvik::InstallationPaths::ofThisProgram().stateDirectory();
    talvik::LogSettings log;
};

void declare(CLI::App& app, Options& options)
{
    app.set_version_flag("--version", "talvik-backendd " TALVIK_VERSION);
    app.add_option("--socket", options.socket, "Unix-domain socket to listen on")
        ->type_name("PATH")
        ->required();
    app.add_option("--device", options.device, "Device configuration")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option(
           "--state-dir", options.stateDir,
           "Directory of the alarms and of what waits for the host, made when it is missing")
        ->type_name("DIR")
        ->capture_default_str();
    app.add_option("--log-level", options.log.level, "Least severe log lines to keep")
        ->check(CLI::IsMember({"trace", "debug", "info", "warn", "error"}))
        ->capture_default_str();
    app.add_option("--log-file", options.log.file, "Log to this file too, rotated at 10 MiB")
        ->type_name("FILE");
    app.footer(
        "Runs in the foreground until SIGTERM or SIGINT. SIGHUP has it open its log file anew.\n"
        "Exit status: 0 stopped, 1 could not start or broke off, 2 wrong usage.\n\n"
        "Example:\n"
        "  talvik-backendd --socket /run/talvik/backend.sock\n"
        "  talvik-agentd --backend unix:/run/talvik/backend.sock");
}

/// Becomes readable at each SIGTERM, SIGINT or SIGHUP; these no longer end the process by
/// themselves.
talvik::backend::FileDescriptor stopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGHUP);
    if (::pthread_sigmask(SIG_BLOCK, &signals, nullptr) != 0 ||
        std::signal(SIGPIPE, SIG_IGN) == SIG_ERR) {
        throw StartupError("cannot set up the handling of signals");
    }
    talvik::backend::FileDescriptor fd(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!fd) {
        const int error = errno;
        throw StartupError(std::string("cannot wait for signals: ") + std::strerror(error));
    }
    return fd;
}

/// Takes the signal that has come. True for SIGHUP, which opens the log file anew.
bool isReloadOnly(const talvik::backend::FileDescriptor& signals, const Options& options)
{
    signalfd_siginfo info{};
    if (::read(signals.get(), &info, sizeof info) != static_cast<ssize_t>(sizeof info) ||
        info.ssi_signo != SIGHUP) {
        return false;
    }
    try {
        talvik::configureLog(options.log);
        talvik::backend::backendLog()->info(
            "SIGHUP: log file {}; all else is read at the start only",
            options.log.file.empty() ? "there is none" : options.log.file + ": opened anew");
    } catch (const StartupError& error) {
        talvik::backend::backendLog()->error("SIGHUP: {}; lines go on to the file that was open",
                                             error.what());
    }
    return true;
}

void serve(const Options& options)
{
    const auto stop = stopSignals();
    talvik::configureLog(options.log);
    talvik::routeAceLog();
    const auto device = talvik::DeviceConfigFile::load(options.device);
    talvik::makePrivateDirectory(options.stateDir);
    talvik::backend::BackEnd backEnd(device, talvik::backend::alarmFileIn(options.stateDir));
    talvik::backend::backendLog()->info("active alarms: {}", backEnd.alarms().countActive());
    talvik::backend::SocketServer server(backEnd.commands(), options.socket,
                                         talvik::backend::ServerLimits(), &backEnd);
    talvik::backend::backendLog()->info("ready, listening on unix:{}", options.socket);
    do {
        server.run(stop.get());
    } while (isReloadOnly(stop, options));
    talvik::backend::backendLog()->info("stopped by a signal");
}

int run(int argc, char** argv)
{
    Options options;
    CLI::App app("Management back end of the storage controller's SNMP agent", "talvik-backendd");
    declare(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == kExitClean ? kExitClean : kExitUsage;
    }
    serve(options);
    return kExitClean;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "talvik-backendd: %s\n", error.what());
    }
    return kExitFailed;
}
