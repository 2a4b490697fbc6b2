#include "host/link/socket_link.h"

#include "host/link/exchange.h"
#include "host/platform/host_log.h"

#include <utility>

namespace talvik {

/// The right to use the connection. Not had when the others before did not finish in time.
class SocketLink::Turn {
public:
    Turn(SocketLink& link, const Deadline& deadline) : link_(link)
    {
        std::unique_lock<std::mutex> lock(link_.mutex_);
        had_ = link_.turnFree_.wait_until(lock, deadline.end, [this] { return !link_.busy_; });
        link_.busy_ = link_.busy_ || had_;
    }

    ~Turn()
    {
        if (had_) {
            const std::lock_guard<std::mutex> lock(link_.mutex_);
            link_.busy_ = false;
            link_.turnFree_.notify_one();
        }
    }

    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    bool had() const { return had_; }

private:
    SocketLink& link_;
    bool had_ = false;
};

SocketLink::SocketLink(const std::string& path, const SocketLimits& limits, Clock clock)
    : path_(path),
      limits_(limits),
      clock_(std::move(clock))
{
}

std::string SocketLink::name() const
{
    return "unix:" + path_;
}

std::string SocketLink::lastFailure() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return lastFailure_;
}

int SocketLink::exchange(Package& request, Package& answer)
{
    const Deadline deadline(limits_.exchange);
    const Turn turn(*this, deadline);
    if (!turn.had()) {
        return kTimedOut;  // the exchanges before this one say why
    }
    if (clock_() < penaltyEnd_) {
        return kTimedOut;
    }
    const auto number = ++exchangeNumber_;
    backend::Bytes wire;
    try {
        wire = requestBytes(request, number);
    } catch (const backend::ProtocolError& error) {
        hostLog()->warn("a request does not go to the back end {}: {}", name(), error.what());
        rememberFailure(error.what());
        return kProtocolError;
    }
    return exchangeBytes(wire, number, answer, deadline);
}

/// A connection is kept after a whole exchange only: an answer might still come otherwise, for
/// nobody.
int SocketLink::exchangeBytes(const backend::Bytes& wire, std::uint32_t number, Package& answer,
                              const Deadline& deadline)
{
    try {
        send(wire, deadline);
        auto reply = connection_.receive(deadline);
        const int code = takeReply(reply, number, answer);
        noteUp();
        return code;
    } catch (const LinkFailure& failure) {
        return fail(failure.code(), failure.what());
    } catch (const backend::ProtocolError& error) {
        return fail(kProtocolError, error.what());
    } catch (...) {
        connection_.close();
        throw;
    }
}

/// A connection that the peer has closed takes no whole request, so the back end did not act on it
/// and it may be sent again, once. A request that was handed over whole is never sent again.
void SocketLink::send(const backend::Bytes& wire, const Deadline& deadline)
{
    const bool fresh = ensureConnected(deadline);
    if (connection_.sendAll(wire, deadline)) {
        return;
    }
    if (!fresh) {
        connect(deadline);
        if (connection_.sendAll(wire, deadline)) {
            return;
        }
    }
    throw LinkFailure(kUnreachable, "it closed the connection before it took the request");
}

/// Returns whether the connection is a new one.
bool SocketLink::ensureConnected(const Deadline& deadline)
{
    const auto readiness = connection_.readiness();
    if (readiness == SocketConnection::Readiness::Ready) {
        return false;
    }
    if (readiness == SocketConnection::Readiness::OutOfStep) {
        hostLog()->warn("back end {} sent bytes that nobody asked for; connecting anew", name());
    }
    connect(deadline);
    return true;
}

void SocketLink::connect(const Deadline& deadline)
{
    const Deadline own(limits_.connect);
    connection_.open(path_, own.end < deadline.end ? own : deadline);
}

void SocketLink::noteUp()
{
    if (state_ != State::Up) {
        hostLog()->info("back end {} is up", name());
    }
    state_ = State::Up;
}

void SocketLink::rememberFailure(const std::string& reason)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    lastFailure_ = reason;
}

int SocketLink::fail(int code, const std::string& reason)
{
    connection_.close();
    if (code == kTimedOut) {
        penaltyEnd_ = clock_() + limits_.penalty;
    }
    rememberFailure(reason);
    if (state_ != State::Down) {
        hostLog()->warn("back end {} is down: {}; commands fail until it answers again", name(),
                        reason);
    }
    state_ = State::Down;
    return code;
}

}  // namespace talvik
