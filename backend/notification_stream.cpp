// A subscribed connection carries, after the reply to the subscription:
// from the back end ::= header(kind 3, number n) record   n = 1, 2, 3 ...
// from the host     ::= header(kind 4, number n)          acknowledges 1 to n
// The long version is docs/backend-protocol.md.
#include "backend/notification_stream.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace talvik::backend {

namespace {

// Small enough that a client that takes its time does not keep the others waiting.
constexpr std::size_t kPageRows = 64;
constexpr std::size_t kPageOctets = std::size_t{32} << 10U;

TLVMsgHeadV3 headOf(const Bytes& wire)
{
    TLVMsgHeadV3 head;
    std::memcpy(static_cast<void*>(&head), wire.data(), sizeof head);
    return head;
}

void checkIsAcknowledgement(const TLVMsgHeadV3& head)
{
    if (kindOf(head) != MessageKind::Acknowledgement) {
        throw ProtocolError("message kind " + std::to_string(head.usShort1) +
                            " where an acknowledgement (4) is due");
    }
    if (head.uiDataLen != 0) {
        throw ProtocolError("an acknowledgement with " + std::to_string(head.uiDataLen) +
                            " bytes of records, none are due");
    }
}

}  // namespace

std::unique_ptr<NotificationStream> NotificationSource::subscribe()
{
    if (taken_.exchange(true)) {
        return nullptr;
    }
    try {
        return std::unique_ptr<NotificationStream>(new NotificationStream(*this));
    } catch (...) {
        taken_ = false;
        throw;
    }
}

NotificationStream::~NotificationStream()
{
    source_.taken_ = false;
}

Bytes NotificationStream::next()
{
    Bytes bytes;
    if (!mayHaveMore()) {
        return bytes;
    }
    const auto room = std::min(kPageRows, kMaxUnacknowledged - underWay_.size());
    const auto page = source_.store_.nextNotifications(lastRead_, room, kPageOctets);
    for (const auto& notification : page) {
        append(bytes, notification);
    }
    mayHaveMore_ = !page.empty();
    return bytes;
}

void NotificationStream::append(Bytes& bytes, const Notification& notification)
{
    const auto sent = acknowledged_ + static_cast<std::uint32_t>(underWay_.size());
    if (sent == source_.lastNumber_) {
        throw ProtocolError("its packages have had all numbers up to " + std::to_string(sent) +
                            "; it may subscribe again");
    }
    TLVMsgHeadV3 head;
    setKind(head, MessageKind::Notification);
    setExchange(head, sent + 1);
    head.uiDataLen = static_cast<std::uint32_t>(notification.record.size());
    const auto* first = reinterpret_cast<const unsigned char*>(&head);
    bytes.insert(bytes.end(), first, first + sizeof head);
    bytes.insert(bytes.end(), notification.record.begin(), notification.record.end());
    underWay_.push_back(notification.sequence);
    lastRead_ = notification.sequence;
}

void NotificationStream::acknowledge(const Bytes& wire)
{
    const auto head = headOf(wire);
    checkIsAcknowledgement(head);
    const auto number = exchangeOf(head);
    const auto sent = acknowledged_ + static_cast<std::uint32_t>(underWay_.size());
    if (number == 0 || number > sent) {
        throw ProtocolError("it acknowledges package " + std::to_string(number) + ", but only " +
                            std::to_string(sent) + " were sent");
    }
    if (number <= acknowledged_) {
        return;  // all up to a later one is acknowledged already
    }
    const auto count = number - acknowledged_;
    settled_ = underWay_[count - 1];
    underWay_.erase(underWay_.begin(), underWay_.begin() + count);
    acknowledged_ = number;
}

void NotificationStream::commit()
{
    // What cannot be removed now goes with the next acknowledgement.
    if (settled_ > removed_ && source_.store_.acknowledge(settled_)) {
        removed_ = settled_;
    }
}

}  // namespace talvik::backend
