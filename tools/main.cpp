// talvikctl: the operator's tool.
#include "host/platform/host_log.h"
#include "tools/command.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>

namespace {

using namespace talvik::ctl;

int run(int argc, char** argv)
{
    CLI::App app("Look after the storage controller's SNMP agent and its back end", "talvikctl");
    app.set_version_flag("--version", "talvikctl " TALVIK_VERSION);
    app.require_subcommand(1);
    app.footer("Examples:\n"
               "  talvikctl backend status --socket /run/talvik/backend.sock\n"
               "  talvikctl alarm raise 501010001 --param DAE000 --param 7\n"
               "  talvikctl alarm list\n"
               "  talvikctl trap list\n"
               "  talvikctl trap add --help");
    Action action;
    addAlarmCommands(app, action);
    addBackendCommands(app, action);
    addCatalogueCommands(app, action);
    addTrapCommands(app, action);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == kExitGood ? kExitGood : kExitUsage;
    }
    talvik::LogSettings silent;  // the commands print what the user needs
    silent.toStderr = false;
    talvik::configureLog(silent);
    return action();
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
