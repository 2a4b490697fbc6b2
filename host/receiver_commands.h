#pragma once

#include "backend/command_server.h"
#include "host/loop_calls.h"
#include "host/platform/device_config_file.h"
#include "host/snmp/trap_sender.h"

#include <functional>

namespace talvik {

/// Adds the agent's own commands to `server`: SHOW_RECEIVERS and SEND_TEST_TRAP. Their numbers come
/// from `config`. The commands run on the server's thread and reach `sender` through `calls`; both
/// outlive the server. `refresh` makes sure that the sender knows all receivers; it is called on
/// the loop's thread. Throws `StartupError` when an item is missing or malformed.
void addReceiverCommands(backend::CommandServer& server, const DeviceConfigFile& config,
                         LoopCalls& calls, TrapSender& sender,
                         const std::function<void()>& refresh);

}  // namespace talvik
