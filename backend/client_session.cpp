#include "backend/client_session.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace talvik::backend {

namespace {

constexpr std::size_t kReadSize = std::size_t{64} << 10U;
constexpr uid_t kRoot = 0;

bool mustWait(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

}  // namespace

bool isTrustedPeer(uid_t peer, uid_t own)
{
    return peer == own || peer == kRoot;
}

ClientSession::ClientSession(FileDescriptor socket, const CommandServer& commands,
                             const ServerLimits& limits)
    : socket_(std::move(socket)),
      commands_(commands),
      limits_(limits),
      input_(limits.maxPackageSize)
{
}

short ClientSession::events() const
{
    return writing() ? POLLOUT : POLLIN;
}

bool ClientSession::proceed(Time now)
{
    const bool wasWriting = writing();
    const bool open = wasWriting || read();
    flush();
    bool movedOn = wasWriting && !writing();
    while (!writing() && answerNext()) {
        movedOn = true;
        flush();
    }
    updateDeadline(now, movedOn);
    if (open || writing()) {
        return true;  // a client that only stopped sending still gets its replies
    }
    if (input_.held() != 0) {
        throw Broken("the stream ended " + std::to_string(input_.held()) + " bytes into a request");
    }
    return false;
}

bool ClientSession::read()
{
    std::array<unsigned char, kReadSize> chunk;
    const auto got = ::recv(socket_.get(), chunk.data(), chunk.size(), MSG_DONTWAIT);
    if (got < 0) {
        const int error = errno;
        if (mustWait(error)) {
            return true;
        }
        throw Broken(std::string("cannot read: ") + std::strerror(error));
    }
    input_.append(chunk.data(), static_cast<std::size_t>(got));
    return got != 0;
}

bool ClientSession::answerNext()
{
    auto request = input_.next();
    if (!request) {
        return false;
    }
    output_ = commands_.serve(*request);
    written_ = 0;
    return true;
}

void ClientSession::flush()
{
    while (writing()) {
        const auto sent = ::send(socket_.get(), output_.data() + written_,
                                 output_.size() - written_, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent < 0) {
            const int error = errno;
            if (mustWait(error)) {
                return;
            }
            throw Broken(std::string("cannot write: ") + std::strerror(error));
        }
        written_ += static_cast<std::size_t>(sent);
    }
    output_ = Bytes();
    written_ = 0;
}

void ClientSession::updateDeadline(Time now, bool movedOn)
{
    if (writing()) {
        if (movedOn || deadline_ == Time::max()) {
            deadline_ = now + limits_.write;
        }
    } else if (input_.held() == 0) {
        deadline_ = Time::max();
    } else if (movedOn || deadline_ == Time::max()) {
        deadline_ = now + limits_.package;
    }
}

void ClientSession::checkDeadline(Time now) const
{
    if (now < deadline_) {
        return;
    }
    if (writing()) {
        throw Broken("it did not take its reply within " + std::to_string(limits_.write.count()) +
                     " ms");
    }
    throw Broken("only " + std::to_string(input_.held()) + " bytes of a request came within " +
                 std::to_string(limits_.package.count()) + " ms");
}

}  // namespace talvik::backend
