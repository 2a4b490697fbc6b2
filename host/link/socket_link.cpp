#include "host/link/socket_link.h"

#include "backend/package_assembler.h"
#include "backend/unix_address.h"
#include "host/link/exchange.h"
#include "host/platform/host_log.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace talvik {

namespace {

constexpr std::size_t kReadSize = std::size_t{64} << 10U;
constexpr std::chrono::milliseconds kConnectPause{10};

bool mustWait(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK;
}

std::string inMs(std::chrono::milliseconds limit)
{
    return std::to_string(limit.count()) + " ms";
}

}  // namespace

/// The right to use the connection. Not had when the others before did not finish in time.
class SocketLink::Turn {
public:
    Turn(SocketLink& link, Time deadline) : link_(link)
    {
        std::unique_lock<std::mutex> lock(link_.mutex_);
        had_ = link_.turnFree_.wait_until(lock, deadline, [this] { return !link_.busy_; });
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

/// Ends an exchange with a code of the link's own.
class SocketLink::Failure : public std::runtime_error {
public:
    Failure(int code, const std::string& reason) : std::runtime_error(reason), code_(code) {}

    int code() const { return code_; }

private:
    int code_;
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
    const auto deadline = std::chrono::steady_clock::now() + limits_.exchange;
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
                              Time deadline)
{
    try {
        send(wire, deadline);
        auto reply = receive(deadline);
        const int code = takeReply(reply, number, answer);
        noteUp();
        return code;
    } catch (const Failure& failure) {
        return fail(failure.code(), failure.what());
    } catch (const backend::ProtocolError& error) {
        return fail(kProtocolError, error.what());
    } catch (...) {
        connection_.reset();
        throw;
    }
}

/// A connection that the peer has closed takes no whole request, so the back end did not act on it
/// and it may be sent again, once. A request that was handed over whole is never sent again.
void SocketLink::send(const backend::Bytes& wire, Time deadline)
{
    const bool fresh = ensureConnected(deadline);
    if (sendAll(wire, deadline)) {
        return;
    }
    connection_.reset();
    if (!fresh) {
        ensureConnected(deadline);
        if (sendAll(wire, deadline)) {
            return;
        }
    }
    throw Failure(kUnreachable, "it closed the connection before it took the request");
}

/// Returns whether the connection is a new one.
bool SocketLink::ensureConnected(Time deadline)
{
    if (connection_ && isUsable()) {
        return false;
    }
    connection_.reset();
    connect(deadline);
    return true;
}

/// Nothing is due between exchanges: whatever there is to read is the end of the stream or bytes
/// that nobody asked for, which must not be taken for the next answer.
bool SocketLink::isUsable()
{
    unsigned char byte = 0;
    const auto got = ::recv(connection_.get(), &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT);
    if (got > 0) {
        hostLog()->warn("back end {} sent bytes that nobody asked for; connecting anew", name());
    }
    return got < 0 && mustWait(errno);
}

void SocketLink::connect(Time deadline)
{
    const auto address = backend::unixAddress(path_);
    if (!address) {
        throw Failure(kUnreachable, backend::unixAddressRefusal(path_));
    }
    backend::FileDescriptor socket(
        ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket) {
        const int error = errno;
        throw Failure(kUnreachable, std::string("no socket: ") + std::strerror(error));
    }
    const auto limit = std::min(deadline, std::chrono::steady_clock::now() + limits_.connect);
    while (::connect(socket.get(), backend::asSocketAddress(*address), sizeof *address) != 0) {
        const int error = errno;
        if (!mustWait(error) && error != EINTR) {
            throw Failure(kUnreachable, std::string("cannot connect: ") + std::strerror(error));
        }
        // The back end's queue of connections is full; the system offers nothing to wait on.
        if (std::chrono::steady_clock::now() >= limit) {
            throw Failure(kTimedOut, "it did not take the connection within " +
                                         inMs(std::min(limits_.connect, limits_.exchange)));
        }
        ::poll(nullptr, 0, static_cast<int>(kConnectPause.count()));
    }
    connection_ = std::move(socket);
}

/// Returns false when the peer closed the connection before it had all of `wire`.
bool SocketLink::sendAll(const backend::Bytes& wire, Time deadline)
{
    std::size_t done = 0;
    while (done < wire.size()) {
        const auto sent = ::send(connection_.get(), wire.data() + done, wire.size() - done,
                                 MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent >= 0) {
            done += static_cast<std::size_t>(sent);
        } else if (mustWait(errno)) {
            waitFor(POLLOUT, deadline, "it did not take the request within ");
        } else if (errno == EPIPE || errno == ECONNRESET) {
            return false;
        } else if (errno != EINTR) {
            const int error = errno;
            throw Failure(kUnreachable, std::string("cannot send: ") + std::strerror(error));
        }
    }
    return true;
}

/// Reads one package and not a byte more.
backend::Bytes SocketLink::receive(Time deadline)
{
    backend::PackageAssembler assembler;
    std::array<unsigned char, kReadSize> chunk;
    for (;;) {
        if (auto package = assembler.next()) {
            return std::move(*package);
        }
        const auto want = std::min(chunk.size(), assembler.missing());
        const auto got = receiveSome(chunk.data(), want, deadline);
        if (got == 0 && assembler.held() == 0) {
            throw Failure(kUnreachable, "it closed the connection without an answer");
        }
        if (got == 0) {
            throw backend::ProtocolError("the stream ended " + std::to_string(assembler.held()) +
                                         " bytes into an answer");
        }
        assembler.append(chunk.data(), got);
    }
}

/// Returns 0 at the end of the stream.
std::size_t SocketLink::receiveSome(unsigned char* data, std::size_t size, Time deadline)
{
    for (;;) {
        const auto got = ::recv(connection_.get(), data, size, MSG_DONTWAIT);
        if (got >= 0) {
            return static_cast<std::size_t>(got);
        }
        const int error = errno;
        if (error == ECONNRESET) {
            return 0;
        }
        if (mustWait(error)) {
            waitFor(POLLIN, deadline, "it did not answer within ");
        } else if (error != EINTR) {
            throw Failure(kUnreachable, std::string("cannot read: ") + std::strerror(error));
        }
    }
}

void SocketLink::waitFor(short event, Time deadline, const char* what)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
        throw Failure(kTimedOut, what + inMs(limits_.exchange));
    }
    pollfd watched{connection_.get(), event, 0};
    if (::poll(&watched, 1, static_cast<int>(left.count())) < 0 && errno != EINTR) {
        const int error = errno;
        throw Failure(kUnreachable, std::string("cannot wait: ") + std::strerror(error));
    }
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
    connection_.reset();
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
