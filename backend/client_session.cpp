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
    if (!stream_) {
        return writing() ? POLLOUT : POLLIN;
    }
    return static_cast<short>(wantsToWrite() ? POLLIN | POLLOUT : POLLIN);
}

/// The system takes nothing more long before its buffer is full, so a stream may wait for the
/// client with nothing half written.
bool ClientSession::wantsToWrite() const
{
    return writing() || (stream_ && stream_->mayHaveMore());
}

bool ClientSession::wake()
{
    if (stream_) {
        stream_->wake();
    }
    return stream_ != nullptr;
}

void ClientSession::carry(std::unique_ptr<NotificationStream> stream)
{
    stream_ = std::move(stream);
}

bool ClientSession::proceed(Time now)
{
    return stream_ ? proceedWithStream(now) : proceedWithCommands(now);
}

bool ClientSession::proceedWithCommands(Time now)
{
    const bool wasWriting = writing();
    const bool open = wasWriting || read();
    flush();
    bool movedOn = wasWriting && !writing();
    while (!stream_ && !writing() && answerNext()) {
        movedOn = true;
        flush();
    }
    updateDeadlines(now, movedOn, movedOn);
    if (open || writing()) {
        return true;  // a client that only stopped sending still gets its replies
    }
    checkEndsBetweenPackages();
    return false;
}

bool ClientSession::proceedWithStream(Time now)
{
    const bool open = read();
    const bool readOn = takeAcknowledgements();
    if (!open) {
        checkEndsBetweenPackages();
        return false;
    }
    updateDeadlines(now, sendNotifications(), readOn);
    return true;
}

/// Writes one page at most, so that the others have their turn. Returns whether it moved on: the
/// page before is written, or there was another one.
bool ClientSession::sendNotifications()
{
    try {
        const bool wasWriting = writing();
        flush();
        if (writing()) {
            return false;
        }
        output_ = stream_->next();
        const bool another = writing();
        flush();
        return wasWriting || another;
    } catch (const Broken&) {
        // A client that left may have acknowledged until the end; that must not be sent again.
        read();
        takeAcknowledgements();
        throw;
    }
}

/// Returns whether there were any.
bool ClientSession::takeAcknowledgements()
{
    bool any = false;
    try {
        while (const auto package = input_.next()) {
            stream_->acknowledge(*package);
            any = true;
        }
    } catch (const ProtocolError&) {
        stream_->commit();  // those before it hold
        throw;
    }
    stream_->commit();
    return any;
}

void ClientSession::checkEndsBetweenPackages() const
{
    if (input_.held() != 0) {
        throw Broken("the stream ended " + std::to_string(input_.held()) + " bytes into a " +
                     (stream_ ? "package" : "request"));
    }
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
    output_ = commands_.serve(*request, this);
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

void ClientSession::updateDeadlines(Time now, bool wroteOn, bool readOn)
{
    const auto update = [](Time& deadline, bool waiting, bool movedOn, Time next) {
        if (!waiting) {
            deadline = Time::max();
        } else if (movedOn || deadline == Time::max()) {
            deadline = next;
        }
    };
    const bool reading = stream_ || !writing();
    update(writeBy_, wantsToWrite(), wroteOn, now + limits_.write);
    update(readBy_, reading && input_.held() != 0, readOn, now + limits_.package);
}

void ClientSession::checkDeadline(Time now) const
{
    if (now >= writeBy_) {
        throw Broken(std::string("it did not take its ") + (stream_ ? "notifications" : "reply") +
                     " within " + std::to_string(limits_.write.count()) + " ms");
    }
    if (now >= readBy_) {
        throw Broken("only " + std::to_string(input_.held()) + " bytes of a " +
                     (stream_ ? "package" : "request") + " came within " +
                     std::to_string(limits_.package.count()) + " ms");
    }
}

}  // namespace talvik::backend
