#pragma once

#include "tools/receiver_status.h"
#include "tools/socket_client.h"

#include <cstdint>
#include <vector>

namespace talvik::ctl {

/// What `talvikctl trap status` and `trap test` were asked.
struct ReceiverOptions {
    SocketOptions socket;
    std::uint32_t index = 0;  ///< of test
};

/// The agent's trap receivers, by index. Throws `Failure`.
std::vector<ReceiverStatus> receiversOf(SocketClient& client);

/// Each carries its command out, prints what came of it and returns the exit status. They throw
/// `StartupError` when the device configuration or the socket path cannot be used.
int runReceiverStatus(const ReceiverOptions& options);
int runReceiverTest(const ReceiverOptions& options);

}  // namespace talvik::ctl
