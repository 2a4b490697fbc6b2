#include "host/platform/name_log.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"

#include <chrono>

namespace talvik {

namespace {

constexpr std::size_t kLinesAMinute = 10;

}  // namespace

void NameLog::note(const NameChange& change, Time now)
{
    sumUp(now);
    if (now >= minuteEnds_) {
        minuteEnds_ = now + std::chrono::minutes(1);
        lines_ = 0;
    }
    if (++lines_ > kLinesAMinute) {
        ++(change.resolves ? again_ : stopped_);
    } else if (change.resolves) {
        hostLog()->info("trap destination {}: the name resolves again", oneLine(change.name));
    } else {
        hostLog()->warn("trap destination {}: the name does not resolve ({}); it is looked up "
                        "again within about a minute. Check it, /etc/hosts and the name servers "
                        "in /etc/resolv.conf",
                        oneLine(change.name), change.reason);
    }
}

void NameLog::sumUp(Time now)
{
    if (now < nextSum()) {
        return;
    }
    hostLog()->warn("trap destinations: within a minute {} more names stopped resolving and {} "
                    "more resolved again",
                    stopped_, again_);
    stopped_ = 0;
    again_ = 0;
}

NameLog::Time NameLog::nextSum() const
{
    return stopped_ + again_ == 0 ? Time::max() : minuteEnds_;
}

}  // namespace talvik
