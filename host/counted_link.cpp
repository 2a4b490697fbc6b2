#include "host/counted_link.h"

#include <utility>

namespace talvik {

void LinkCounters::add(bool works)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    ++values_.exchanges;
    values_.works = works;
    if (works) {
        values_.answered = std::time(nullptr);
    } else {
        ++values_.failures;
        values_.failed = std::chrono::steady_clock::now();
    }
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
