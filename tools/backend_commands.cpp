#include "tools/backend_status.h"
#include "tools/command_line.h"

#include "host/installation_paths.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace talvik::ctl {

namespace {

void addStatus(CLI::App& backend, Action& action)
{
    auto options = std::make_shared<StatusOptions>();
    options->device = InstallationPaths::ofThisProgram().configFile("talvik-device.xml");
    auto* status = backend.add_subcommand("status", "Ask whether the back end answers");
    status->add_option("--socket", options->socket, "The back end's Unix-domain socket")
        ->type_name("PATH")
        ->required();
    status->add_option("--device", options->device, "Device configuration with the command numbers")
        ->type_name("FILE")
        ->capture_default_str();
    status->add_option("--timeout", options->timeoutMs, "Give up after so many milliseconds")
        ->type_name("MS")
        ->check(CLI::Range(1U, kMaxTimeoutMs))
        ->capture_default_str();
    addOutputOptions(*status, options->output);
    setHelp(
        *status,
        {"",
         "0 the back end is up, 1 it refuses the question, 2 wrong usage or a file that cannot\n"
         "be used, 3 it is down.",
         {"talvikctl backend status --socket /run/talvik/backend.sock",
          "talvikctl backend status --socket /run/talvik/backend.sock --json"}});
    onCommand(*status, action, options->output, [options] { return runStatus(*options); });
}

}  // namespace

void addBackendCommands(CLI::App& talvikctl, Action& action)
{
    auto* backend = talvikctl.add_subcommand("backend", "The management back end");
    backend->require_subcommand(1);
    setHelp(*backend, {"", "", {"talvikctl backend status --socket /run/talvik/backend.sock"}});
    addStatus(*backend, action);
}

}  // namespace talvik::ctl
