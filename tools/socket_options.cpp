#include "tools/socket_options.h"

#include "host/installation_paths.h"
#include "tools/backend_status.h"

#include <CLI/CLI.hpp>

namespace talvik::ctl {

void addSocketOptions(CLI::App& command, SocketOptions& options)
{
    const auto paths = InstallationPaths::ofThisProgram();
    options.socket = paths.stateDirectory() + "/agent.sock";
    options.device = paths.configFile("talvik-device.xml");
    command
        .add_option(
            "--socket", options.socket,
            "Unix-domain socket of the agent, or of talvik-backendd; agent.sock in the state "
            "directory without it")
        ->type_name("PATH")
        ->capture_default_str();
    command
        .add_option(
            "--device", options.device,
            "Device configuration with the command numbers; the installation's own without it")
        ->type_name("FILE")
        ->capture_default_str();
    command.add_option("--timeout", options.timeoutMs, "Give up after so many milliseconds")
        ->type_name("MS")
        ->check(CLI::Range(1U, kMaxTimeoutMs))
        ->capture_default_str();
}

}  // namespace talvik::ctl
