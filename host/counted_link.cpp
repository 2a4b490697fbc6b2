#include "host/counted_link.h"

#include <utility>

namespace talvik {

LinkCounters::LinkCounters(HealthClock clock) : clock_(std::move(clock)) {}

void LinkCounters::add(bool works)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    ++values_.exchanges;
    values_.works = works;
    if (works) {
        values_.answered = clock_.date();
    } else {
        ++values_.failures;
        values_.failed = clock_.steady();
    }
}

void LinkCounters::noteAnswer()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    values_.works = true;
}

LinkCounters::Values LinkCounters::values() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return values_;
}

CountedLink::CountedLink(std::unique_ptr<BackendLink> link, LinkCounters& counters)
    : link_(std::move(link)),
      counters_(counters)
{
}

int CountedLink::exchange(Package& request, Package& answer)
{
    const int result = link_->exchange(request, answer);
    counters_.add(result != kUnreachable && result != kTimedOut && result != kProtocolError);
    return result;
}

}  // namespace talvik
