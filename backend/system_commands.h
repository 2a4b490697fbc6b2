#pragma once

#include "backend/command_server.h"
#include "host/platform/device_config_file.h"

namespace talvik::backend {

/// Adds the commands about the system as a whole: GET_SYSTEM_WWN. Their numbers and what they
/// answer come from `config`. Throws `StartupError` when an item is missing or malformed.
void addSystemCommands(CommandServer& server, const DeviceConfigFile& config);

/// A server with the commands about the system, and no others yet.
CommandServer makeCommandServer(const DeviceConfigFile& config);

/// The number of the command `name` in section "COMMAND": 1 to 2^63 - 1. Throws `StartupError` for
/// anything else.
std::uint64_t commandNumber(const DeviceConfigFile& config, const std::string& name);

}  // namespace talvik::backend
