#pragma once

#include "backend/protocol.h"
#include "host/link/backend_link.h"
#include "host/link/socket_connection.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

namespace talvik {

/// How long a socket link waits for what.
struct SocketLimits {
    std::chrono::milliseconds connect{500};  ///< for the back end to take the connection
    std::chrono::milliseconds exchange{
        1000};  ///< for the whole exchange, its turn and connecting included
    std::chrono::milliseconds penalty{
        2000};  ///< after a time-out exchanges fail at once for so long
};

/// A back end in another process. Connects when there is something to send, and again when the
/// connection was lost; no command is ever sent to the back end twice.
class SocketLink : public BackendLink {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Clock = std::function<Time()>;

    /// `clock` times the penalty alone; the waits themselves are real.
    explicit SocketLink(const std::string& path, const SocketLimits& limits = SocketLimits(),
                        Clock clock = std::chrono::steady_clock::now);

    int exchange(Package& request, Package& answer) override;
    std::string name() const override;

    /// Why the latest exchange that failed did so, for the user; empty before the first.
    std::string lastFailure() const;

private:
    class Turn;
    enum class State { Unknown, Up, Down };

    int exchangeBytes(const backend::Bytes& wire, std::uint32_t number, Package& answer,
                      const Deadline& deadline);
    void send(const backend::Bytes& wire, const Deadline& deadline);
    bool ensureConnected(const Deadline& deadline);
    void connect(const Deadline& deadline);
    void noteUp();
    void rememberFailure(const std::string& reason);
    int fail(int code, const std::string& reason);

    const std::string path_;
    const SocketLimits limits_;
    const Clock clock_;

    mutable std::mutex mutex_;
    std::condition_variable turnFree_;
    bool busy_ = false;        // an exchange is under way; guarded by mutex_
    std::string lastFailure_;  // guarded by mutex_

    // Touched only by the exchange that is under way.
    SocketConnection connection_;
    std::uint32_t exchangeNumber_ = 0;
    Time penaltyEnd_ = Time::min();
    State state_ = State::Unknown;
};

}  // namespace talvik
