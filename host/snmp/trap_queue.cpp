#include "host/snmp/trap_queue.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace talvik {

TrapQueue::~TrapQueue()
{
    items_.clear();
    count();
}

void TrapQueue::push(const std::shared_ptr<OutgoingTrap>& trap, const Delivery& delivery, Time now)
{
    items_.push_back({nextNumber_++, trap, delivery, now});
    count();
}

QueuedTrap* TrapQueue::next()
{
    const auto found = findNext();
    return found == items_.end() ? nullptr : &*found;
}

void TrapQueue::takeNext()
{
    const auto next = findNext();
    if (!next->trap->serial().empty()) {
        underWay_.insert(next->trap->serial());
    }
    items_.erase(next);
    count();
}

void TrapQueue::ended(const QueuedTrap& item)
{
    underWay_.erase(item.trap->serial());
}

void TrapQueue::putBack(QueuedTrap item)
{
    const auto behind = std::find_if(items_.begin(), items_.end(), [&](const QueuedTrap& other) {
        return other.number > item.number;
    });
    items_.insert(behind, std::move(item));
    count();
}

void TrapQueue::dropNext()
{
    items_.erase(findNext());
    count();
}

void TrapQueue::dropOldest()
{
    items_.pop_front();
    count();
}

void TrapQueue::takeOver(TrapQueue& former)
{
    for (auto& item : former.items_) {
        item.attempts = 0;
    }
    for (auto& item : items_) {
        item.number += former.nextNumber_;
    }
    nextNumber_ += former.nextNumber_;
    items_.insert(items_.begin(), std::make_move_iterator(former.items_.begin()),
                  std::make_move_iterator(former.items_.end()));
    former.items_.clear();
    former.count();
    count();
}

TrapQueue::Items::iterator TrapQueue::findNext()
{
    return std::find_if(items_.begin(), items_.end(), [&](const QueuedTrap& item) {
        return underWay_.count(item.trap->serial()) == 0;
    });
}

/// Tells the total what has changed.
void TrapQueue::count()
{
    const auto now = items_.size();
    total_.traps = total_.traps + now - counted_;
    total_.queues =
        total_.queues + std::min<std::size_t>(now, 1) - std::min<std::size_t>(counted_, 1);
    counted_ = now;
}

}  // namespace talvik
