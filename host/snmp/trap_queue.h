#pragma once

#include "host/snmp/outgoing_trap.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <string>

namespace talvik {

/// One notification for one receiver.
struct QueuedTrap {
    using Time = std::chrono::steady_clock::time_point;

    std::uint64_t number = 0;  ///< the order in which they came
    std::shared_ptr<OutgoingTrap> trap;
    Delivery delivery;
    Time since;
    unsigned attempts = 0;
};

/// What waits for all receivers together.
struct QueueTotal {
    static constexpr std::size_t kMaxWaiting = 65536;

    std::size_t traps = 0;
    std::size_t queues = 0;  ///< in which something waits

    bool isTooMuch() const { return traps > kMaxWaiting; }

    /// What each queue may hold when it is.
    std::size_t share() const { return kMaxWaiting / (queues == 0 ? 1 : queues); }
};

/// What waits for one receiver, in the order in which it came. Of the notifications about one alarm
/// only one is on its way at a time, so that they arrive in order though others overtake them.
class TrapQueue {
public:
    using Time = QueuedTrap::Time;

    /// `total` outlives it.
    explicit TrapQueue(QueueTotal& total) : total_(total) {}
    ~TrapQueue();

    TrapQueue(const TrapQueue&) = delete;
    TrapQueue& operator=(const TrapQueue&) = delete;

    std::size_t size() const { return items_.size(); }
    bool empty() const { return items_.empty(); }

    void push(const std::shared_ptr<OutgoingTrap>& trap, const Delivery& delivery, Time now);

    /// The first that is not about an alarm of which something is on its way; null if there is
    /// none. Valid until the queue changes.
    QueuedTrap* next();

    /// Takes `next` out; to be told by `ended` what came of it.
    void takeNext();

    /// `item`, taken out before, is not on its way any more.
    void ended(const QueuedTrap& item);

    /// To where it was, `ended` before.
    void putBack(QueuedTrap item);

    /// `next`, or the oldest, is not sent at all.
    void dropNext();
    void dropOldest();

    const QueuedTrap& oldest() const { return items_.front(); }

    /// Continues with what waits in `former`, in front of what waits here.
    void takeOver(TrapQueue& former);

private:
    using Items = std::deque<QueuedTrap>;

    Items::iterator findNext();
    void count();

    QueueTotal& total_;
    std::uint64_t nextNumber_ = 0;
    Items items_;
    std::set<std::string> underWay_;  ///< serial numbers
    std::size_t counted_ = 0;         ///< in `total_`
};

}  // namespace talvik
