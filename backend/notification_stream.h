#pragma once

#include "backend/alarm_store.h"
#include "backend/protocol.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>

namespace talvik::backend {

/// Packages that may be under way without an acknowledgement.
constexpr std::size_t kMaxUnacknowledged = 1024;

class NotificationStream;

/// Hands a store's outbox to one subscriber at a time.
class NotificationSource {
public:
    /// `store` must outlive the source. A stream ends instead of sending a package whose number is
    /// above `lastNumber`.
    explicit NotificationSource(AlarmStore& store, std::uint32_t lastNumber = 0xFFFFFFFF)
        : store_(store),
          lastNumber_(lastNumber)
    {
    }

    NotificationSource(const NotificationSource&) = delete;
    NotificationSource& operator=(const NotificationSource&) = delete;

    /// The stream for a new subscriber, or null while another one has it. The source must outlive
    /// the stream.
    std::unique_ptr<NotificationStream> subscribe();

private:
    friend class NotificationStream;

    AlarmStore& store_;
    const std::uint32_t lastNumber_;
    std::atomic<bool> taken_{false};
};

/// The notifications of one subscription: all that wait in the outbox and all that come later, in
/// their order, numbered from 1. What is not acknowledged stays in the outbox for the next
/// subscription. Used by one thread at a time.
class NotificationStream {
public:
    ~NotificationStream();

    NotificationStream(const NotificationStream&) = delete;
    NotificationStream& operator=(const NotificationStream&) = delete;

    /// The bytes of the next packages, a page of them; none when the window is full or the outbox
    /// holds no more. Throws `SqliteError` when the outbox cannot be read and `ProtocolError` when
    /// the numbers are used up.
    Bytes next();

    /// Whether `next` may have something.
    bool mayHaveMore() const { return mayHaveMore_ && underWay_.size() < kMaxUnacknowledged; }

    /// Says that the outbox has grown.
    void wake() { mayHaveMore_ = true; }

    /// Takes an acknowledgement of a package and all before it. Throws `ProtocolError` when `wire`,
    /// a package, is none, or is one for a package that was not sent.
    void acknowledge(const Bytes& wire);

    /// Removes what was acknowledged from the outbox, in one transaction.
    void commit();

private:
    friend class NotificationSource;

    explicit NotificationStream(NotificationSource& source) : source_(source) {}

    void append(Bytes& bytes, const Notification& notification);

    NotificationSource& source_;
    std::deque<std::int64_t> underWay_;  // sequences of the packages `acknowledged_` + 1 and on
    std::uint32_t acknowledged_ = 0;     // number of the last package that was acknowledged
    std::int64_t lastRead_ = 0;          // sequence of the last notification that was sent
    std::int64_t settled_ = 0;           // sequence of the last one that was acknowledged
    std::int64_t removed_ = 0;           // sequence of the last one that was removed
    bool mayHaveMore_ = true;
};

}  // namespace talvik::backend
