#include "host/link/socket_connection.h"

#include "backend/package_assembler.h"
#include "backend/unix_address.h"
#include "host/link/backend_link.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace talvik {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kReadSize = std::size_t{64} << 10U;
constexpr int kConnectPauseMs = 10;

bool mustWait(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK;
}

LinkFailure unreachable(const std::string& what, int error)
{
    return LinkFailure(BackendLink::kUnreachable, what + ": " + std::strerror(error));
}

LinkFailure timedOut(const std::string& what, const Deadline& deadline)
{
    return LinkFailure(BackendLink::kTimedOut,
                       what + " within " + std::to_string(deadline.limit.count()) + " ms");
}

}  // namespace

SocketConnection::Readiness SocketConnection::readiness() const
{
    if (!socket_) {
        return Readiness::Closed;
    }
    unsigned char byte = 0;
    const auto got = ::recv(socket_.get(), &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT);
    if (got > 0) {
        return Readiness::OutOfStep;
    }
    return got < 0 && mustWait(errno) ? Readiness::Ready : Readiness::Closed;
}

void SocketConnection::open(const std::string& path, const Deadline& deadline)
{
    close();
    const auto address = backend::unixAddress(path);
    if (!address) {
        throw LinkFailure(BackendLink::kUnreachable, backend::unixAddressRefusal(path));
    }
    backend::FileDescriptor socket(
        ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket) {
        const int error = errno;
        throw unreachable("no socket", error);
    }
    while (::connect(socket.get(), backend::asSocketAddress(*address), sizeof *address) != 0) {
        const int error = errno;
        if (!mustWait(error) && error != EINTR) {
            throw unreachable("cannot connect", error);
        }
        // The back end's queue of connections is full; the system offers nothing to wait on.
        if (Clock::now() >= deadline.end) {
            throw timedOut("it did not take the connection", deadline);
        }
        ::poll(nullptr, 0, kConnectPauseMs);
    }
    socket_ = std::move(socket);
}

bool SocketConnection::sendAll(const backend::Bytes& wire, const Deadline& deadline)
{
    std::size_t done = 0;
    while (done < wire.size()) {
        const auto sent = ::send(socket_.get(), wire.data() + done, wire.size() - done,
                                 MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent >= 0) {
            done += static_cast<std::size_t>(sent);
        } else if (mustWait(errno)) {
            waitFor(POLLOUT, deadline, "it did not take the request");
        } else if (errno == EPIPE || errno == ECONNRESET) {
            return false;
        } else if (errno != EINTR) {
            const int error = errno;
            throw unreachable("cannot send", error);
        }
    }
    return true;
}

backend::Bytes SocketConnection::receive(const Deadline& deadline)
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
            throw LinkFailure(BackendLink::kUnreachable,
                              "it closed the connection without an answer");
        }
        if (got == 0) {
            throw backend::ProtocolError("the stream ended " + std::to_string(assembler.held()) +
                                         " bytes into an answer");
        }
        assembler.append(chunk.data(), got);
    }
}

/// Returns 0 at the end of the stream.
std::size_t SocketConnection::receiveSome(unsigned char* data, std::size_t size,
                                          const Deadline& deadline)
{
    for (;;) {
        const auto got = ::recv(socket_.get(), data, size, MSG_DONTWAIT);
        if (got >= 0) {
            return static_cast<std::size_t>(got);
        }
        const int error = errno;
        if (error == ECONNRESET) {
            return 0;
        }
        if (mustWait(error)) {
            waitFor(POLLIN, deadline, "it did not answer");
        } else if (error != EINTR) {
            throw unreachable("cannot read", error);
        }
    }
}

void SocketConnection::waitFor(short event, const Deadline& deadline, const char* what) const
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline.end - Clock::now());
    if (left.count() <= 0) {
        throw timedOut(what, deadline);
    }
    pollfd watched{socket_.get(), event, 0};
    if (::poll(&watched, 1, static_cast<int>(left.count())) < 0 && errno != EINTR) {
        const int error = errno;
        throw unreachable("cannot wait", error);
    }
}

}  // namespace talvik
