#pragma once

#include "tools/receiver_status.h"
#include "tools/socket_client.h"

#include <cstdint>
#include <vector>

namespace talvik::ctl {

/// The agent waits 10 seconds for a way to a receiver before it gives a notification up.
constexpr unsigned kTestWait = 12;
constexpr unsigned kMostTestWait = 3600;

/// What `talvikctl trap status` and `trap test` were asked.
struct ReceiverOptions {
    SocketOptions socket;
    std::uint32_t index = 0;           ///< of test
    unsigned waitSeconds = kTestWait;  ///< of test: for the outcome; 0 for not at all
};

/// The agent's trap receivers, by index. Throws `Failure`.
std::vector<ReceiverStatus> receiversOf(SocketClient& client);

/// Each carries its command out, prints what came of it and returns the exit status. They throw
/// `StartupError` when the device configuration or the socket path cannot be used.
int runReceiverStatus(const ReceiverOptions& options);
int runReceiverTest(const ReceiverOptions& options);

}  // namespace talvik::ctl
