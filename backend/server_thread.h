#pragma once

#include "backend/socket_server.h"
#include "backend/wake_signal.h"

#include <string>
#include <thread>

namespace talvik::backend {

/// A socket server that runs on a thread of its own until the object's end. All signals are blocked
/// on that thread.
class ServerThread {
public:
    /// Listens on `path` at once and then serves. `commands` and `work`, if there is any, must
    /// outlive the thread and hold all their commands already. Throws `StartupError`.
    ServerThread(const CommandServer& commands, const std::string& path,
                 BackgroundWork* work = nullptr, const ServerLimits& limits = ServerLimits());

    /// Disconnects the clients and removes the socket; waits for nothing longer than a command
    /// takes.
    ~ServerThread();

    ServerThread(const ServerThread&) = delete;
    ServerThread& operator=(const ServerThread&) = delete;

private:
    void run() noexcept;

    const std::string path_;
    WakeSignal stop_;
    SocketServer server_;
    std::thread thread_;
};

}  // namespace talvik::backend
