// talvikctl: the operator's tool.
#include "host/platform/ace_log_route.h"
#include "host/platform/host_log.h"
#include "tools/command_line.h"
#include "tools/missing_command.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <iostream>
#include <string>

namespace {

using namespace talvik::ctl;

constexpr const char* kProgram = "talvikctl";

/// What was printed may be all that a program gets to know, so it has to have arrived.
int flushed(int status)
{
    std::cout.flush();
    if (std::cout) {
        return status;
    }
    std::cerr << kProgram << ": cannot write to standard output; what was done is done\n";
    return status == kExitGood ? kExitBad : status;
}

int run(int argc, char** argv)
{
    CLI::App app("Look after the storage controller's SNMP agent and its back end", kProgram);
    app.set_version_flag("--version", "talvikctl " TALVIK_VERSION, "Print the version");
    bool parseOnly = false;
    app.add_flag("--parse-only", parseOnly, "Only check the command line, and do nothing");
    app.require_subcommand(1);
    app.failure_message([](const CLI::App* command, const CLI::Error& error) {
        return std::string(kProgram) + ": " + CLI::FailureMessage::simple(command, error);
    });
    setHelp(app, {"talvikctl help COMMAND shows the help of a command.",
                  kAskingExitStatus,
                  {"talvikctl backend status --socket /run/talvik/backend.sock",
                   "talvikctl alarm raise 501010001 --param DAE000 --param 7",
                   "talvikctl alarm list", "talvikctl trap list", "talvikctl help trap add"}});
    Action action;
    addAlarmCommands(app, action);
    addBackendCommands(app, action);
    addCatalogueCommands(app, action);
    addCompletionCommand(app, action);
    addHelpCommand(app, action);
    addPackageCommands(app, action);
    addTrapCommands(app, action);
    addWatchCommand(app, action);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool lacks = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
        if (const auto failure = lacks ? missingCommand(app) : std::nullopt) {
            printMissingCommand(app, *failure);
            return flushed(kExitUsage);
        }
        return app.exit(error) == kExitGood ? flushed(kExitGood) : kExitUsage;
    }
    talvik::LogSettings silent;  // the commands print what the user needs
    silent.toStderr = false;
    talvik::configureLog(silent);
    talvik::routeAceLog();
    return flushed(parseOnly ? kExitGood : action());
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "talvikctl: %s\n", error.what());
    }
    return kExitUsage;
}
