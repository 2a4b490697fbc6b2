#pragma once

#include "tools/socket_client.h"

namespace CLI {
class App;
}

namespace talvik::ctl {

/// Adds --socket, --device, --timeout to `command`, with the installation's own as defaults.
void addSocketOptions(CLI::App& command, SocketOptions& options);

}  // namespace talvik::ctl
