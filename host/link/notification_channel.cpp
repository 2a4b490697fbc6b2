#include "host/link/notification_channel.h"

#include "backend/unix_address.h"
#include "host/link/exchange.h"
#include "host/platform/host_log.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace talvik {

namespace {

using backend::MessageKind;

constexpr std::size_t kReadSize = std::size_t{64} << 10U;
constexpr std::uint32_t kSubscription = 1;  // exchange number of the one request
constexpr LoopWatcher::Time kAtOnce{};

bool mustWait(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

/// Why the connection is of no use; `what()` is the end of a sentence about the back end.
class Broken : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

[[noreturn]] void breakOff(const std::string& what, int error)
{
    throw Broken(what + ": " + std::generic_category().message(error));
}

backend::FileDescriptor connected(const std::string& path)
{
    const auto address = backend::unixAddress(path);
    if (!address) {
        throw Broken(backend::unixAddressRefusal(path));
    }
    backend::FileDescriptor socket(
        ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket) {
        breakOff("no socket", errno);
    }
    // On this kind of socket a connection is there at once or not at all.
    if (::connect(socket.get(), backend::asSocketAddress(*address), sizeof *address) != 0) {
        breakOff("cannot connect", errno);
    }
    return socket;
}

backend::Bytes subscription(std::uint64_t command)
{
    Package request;
    auto record = std::make_unique<CTLVRecordV3>();
    record->ullRecordId = command;
    request.oRecords.push_back(record.get());
    static_cast<void>(record.release());
    return requestBytes(request, kSubscription);
}

backend::Bytes acknowledgement(std::uint32_t number)
{
    Package package;
    backend::setKind(package.oHead, MessageKind::Acknowledgement);
    backend::setExchange(package.oHead, number);
    return backend::encoded(package);
}

TLVMsgHeadV3 headOf(const backend::Bytes& wire)
{
    TLVMsgHeadV3 head;
    std::memcpy(static_cast<void*>(&head), wire.data(), sizeof head);
    return head;
}

}  // namespace

NotificationChannel::NotificationChannel(std::string path, std::uint64_t subscribeCommand,
                                         Consumer consumer)
    : NotificationChannel(std::move(path), subscribeCommand, std::move(consumer), Limits())
{
}

NotificationChannel::NotificationChannel(std::string path, std::uint64_t subscribeCommand,
                                         Consumer consumer, const Limits& limits)
    : path_(std::move(path)),
      subscribeCommand_(subscribeCommand),
      consumer_(std::move(consumer)),
      limits_(limits),
      pause_(limits.firstPause)
{
}

LoopWatcher::Time NotificationChannel::deadline() const
{
    switch (state_) {
    case State::Down:
        return retryAt_;
    case State::Subscribing:
        return moreToTake_ ? kAtOnce : subscribeEnd_;
    case State::Subscribed:
        break;
    }
    const bool canGoOn = moreToTake_ || (acknowledgements_.due() && !wantsToWrite());
    return canGoOn ? kAtOnce : holdEnd_;
}

std::optional<bool> NotificationChannel::works() const
{
    const bool known = isSubscribed() || !reported_.empty();
    return known ? std::optional(isSubscribed()) : std::nullopt;
}

void NotificationChannel::proceed(bool ready, Time now)
{
    try {
        if (state_ == State::Down) {
            if (now >= retryAt_) {
                connect(now);
            }
            return;
        }
        if (ready && !moreToTake_) {
            read();
        }
        takePackages();
        if (state_ == State::Subscribing && now >= subscribeEnd_) {
            throw Broken("no answer to the subscription within " +
                         std::to_string(limits_.subscribe.count()) + " ms");
        }
        acknowledge(now);
        write();
    } catch (const Broken& error) {
        fail(error.what(), now);
    } catch (const backend::ProtocolError& error) {
        fail(error.what(), now);
    }
}

void NotificationChannel::connect(Time now)
{
    socket_ = connected(path_);
    input_ = backend::PackageAssembler();
    acknowledgements_ = Acknowledgements();
    acknowledged_ = 0;
    holdReported_ = false;
    output_ = subscription(subscribeCommand_);
    written_ = 0;
    subscribeEnd_ = now + limits_.subscribe;
    state_ = State::Subscribing;
    write();
}

void NotificationChannel::read()
{
    std::array<unsigned char, kReadSize> chunk;
    const auto got = ::recv(socket_.get(), chunk.data(), chunk.size(), MSG_DONTWAIT);
    if (got < 0) {
        const int error = errno;
        if (mustWait(error)) {
            return;
        }
        breakOff("cannot read", error);
    }
    if (got == 0) {
        throw Broken("it closed the connection");
    }
    input_.append(chunk.data(), static_cast<std::size_t>(got));
    moreToTake_ = true;
}

void NotificationChannel::takePackages()
{
    for (unsigned taken = 0; moreToTake_ && taken < limits_.recordsATurn; ++taken) {
        auto wire = input_.next();
        if (!wire) {
            moreToTake_ = false;
        } else if (state_ == State::Subscribing) {
            takeReply(*wire);
        } else {
            takeNotification(*wire);
        }
    }
}

void NotificationChannel::takeReply(backend::Bytes& wire)
{
    Package answer;
    const auto code = static_cast<std::uint32_t>(talvik::takeReply(wire, kSubscription, answer));
    if (code == backend::result::kAlreadySubscribed) {
        throw Broken("another agent takes its notifications");
    }
    if (code != backend::result::kSuccess) {
        throw Broken("it refuses the subscription with result " + std::to_string(code) +
                     " (docs/backend-protocol.md)");
    }
    state_ = State::Subscribed;
    subscribedSince_ = std::chrono::steady_clock::now();
    reported_.clear();
    pause_ = limits_.firstPause;
    hostLog()->info("the notifications of the back end unix:{} come in", path_);
}

void NotificationChannel::takeNotification(backend::Bytes& wire)
{
    const auto head = headOf(wire);
    if (backend::kindOf(head) != MessageKind::Notification) {
        throw Broken("it sent a message of kind " + std::to_string(head.usShort1) +
                     " where a notification (3) is due");
    }
    if (backend::exchangeOf(head) != acknowledgements_.next()) {
        throw Broken("it sent notification " + std::to_string(backend::exchangeOf(head)) +
                     " where " + std::to_string(acknowledgements_.next()) + " is due");
    }
    ++received_;
    const auto delivery = acknowledgements_.expect();
    Package package;
    try {
        backend::decodeInto(package, wire);
    } catch (const backend::ProtocolError& error) {
        // It would come again and again, and nothing behind it ever.
        hostLog()->error("a notification of the back end unix:{} cannot be read and is passed "
                         "over: {}",
                         path_, error.what());
        return;
    }
    for (const auto* record : package.oRecords) {
        consumer_(*record, delivery);
    }
}

/// True while the back end waits for an acknowledgement before it sends more.
bool NotificationChannel::isHeldUp() const
{
    return acknowledgements_.next() - 1 - acknowledged_ >= limits_.unacknowledged;
}

void NotificationChannel::acknowledge(Time now)
{
    if (wantsToWrite()) {
        return;
    }
    const auto settled = acknowledgements_.take().value_or(0);
    if (settled > acknowledged_) {
        acknowledgeUpTo(settled);
    } else if (isHeldUp() && now >= holdEnd_) {
        if (!holdReported_) {
            hostLog()->warn("{} notifications of the back end wait for receivers that do not "
                            "answer; the oldest count as delivered, so that the others get theirs",
                            limits_.unacknowledged);
            holdReported_ = true;
        }
        acknowledgeUpTo(acknowledged_ + limits_.unacknowledged / 2);
    } else if (isHeldUp() && holdEnd_ == Time::max()) {
        holdEnd_ = now + limits_.longestHold;
    }
}

void NotificationChannel::acknowledgeUpTo(std::uint32_t number)
{
    output_ = acknowledgement(number);
    written_ = 0;
    acknowledged_ = number;
    holdEnd_ = Time::max();
}

void NotificationChannel::write()
{
    while (wantsToWrite()) {
        const auto sent = ::send(socket_.get(), output_.data() + written_,
                                 output_.size() - written_, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent < 0) {
            const int error = errno;
            if (mustWait(error)) {
                return;
            }
            breakOff("cannot write", error);
        }
        written_ += static_cast<std::size_t>(sent);
    }
}

void NotificationChannel::fail(const std::string& reason, Time now)
{
    if (reported_ != reason) {
        hostLog()->warn("no notifications from the back end unix:{}: {}; trying again, at least "
                        "every {} ms. It keeps what it has to report meanwhile",
                        path_, reason, limits_.longestPause.count());
        reported_ = reason;
    }
    socket_.reset();
    state_ = State::Down;
    moreToTake_ = false;
    output_.clear();
    written_ = 0;
    acknowledgements_ = Acknowledgements();
    holdEnd_ = Time::max();
    retryAt_ = now + pause_;
    pause_ = std::min(pause_ * 2, limits_.longestPause);
}

}  // namespace talvik
