#include "host/snmp/event_loop.h"

#include "host/snmp/net_snmp.h"

#include <sys/select.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace talvik {

namespace {

using Time = LoopWatcher::Time;

constexpr long kMicrosecondsPerSecond = 1'000'000;

/// A set of descriptors without select's limit of 1024.
class DescriptorSet {
public:
    DescriptorSet() { netsnmp_large_fd_set_init(&set_, FD_SETSIZE); }
    ~DescriptorSet() { netsnmp_large_fd_set_cleanup(&set_); }

    DescriptorSet(const DescriptorSet&) = delete;
    DescriptorSet& operator=(const DescriptorSet&) = delete;

    void clear() { NETSNMP_LARGE_FD_ZERO(&set_); }
    void add(int descriptor) { netsnmp_large_fd_setfd(descriptor, &set_); }
    bool contains(int descriptor) { return netsnmp_large_fd_is_set(descriptor, &set_) != 0; }
    netsnmp_large_fd_set* get() { return &set_; }

private:
    netsnmp_large_fd_set set_{};
};

/// What one round waits for.
class Round {
public:
    void begin(int stopFd)
    {
        readable_.clear();
        writable_.clear();
        readable_.add(stopFd);
        count_ = stopFd + 1;
        block_ = 1;
        timeout_ = timeval{};
        snmp_select_info2(&count_, readable_.get(), &timeout_, &block_);
        count_ = std::max(count_, stopFd + 1);
    }

    void watch(const LoopWatcher& watcher, Time now)
    {
        const int descriptor = watcher.descriptor();
        if (descriptor >= 0) {
            readable_.add(descriptor);
            if (watcher.wantsToWrite()) {
                writable_.add(descriptor);
            }
            count_ = std::max(count_, descriptor + 1);
        }
        const auto deadline = watcher.deadline();
        if (deadline != Time::max()) {
            shorten(deadline <= now ? Time::duration::zero() : deadline - now);
        }
    }

    /// False when a signal cut it short.
    bool wait()
    {
        const int found = netsnmp_large_fd_set_select(count_, readable_.get(), writable_.get(),
                                                      nullptr, block_ != 0 ? nullptr : &timeout_);
        if (found < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "waiting for requests");
        }
        found_ = std::max(found, 0);
        return found >= 0;
    }

    bool any() const { return found_ > 0; }
    bool canRead(int descriptor) { return any() && readable_.contains(descriptor); }

    bool isReady(const LoopWatcher& watcher)
    {
        const int descriptor = watcher.descriptor();
        return any() && descriptor >= 0 &&
               (readable_.contains(descriptor) || writable_.contains(descriptor));
    }

    netsnmp_large_fd_set* readable() { return readable_.get(); }

private:
    void shorten(Time::duration left)
    {
        using std::chrono::microseconds;
        const auto micros = std::chrono::ceil<microseconds>(left);
        timeval limit{};
        limit.tv_sec = static_cast<time_t>(micros.count() / kMicrosecondsPerSecond);
        limit.tv_usec = static_cast<suseconds_t>(micros.count() % kMicrosecondsPerSecond);
        if (block_ != 0 || timercmp(&limit, &timeout_, <)) {
            timeout_ = limit;
            block_ = 0;
        }
    }

    DescriptorSet readable_;
    DescriptorSet writable_;
    timeval timeout_{};
    int count_ = 0;
    int block_ = 1;
    int found_ = 0;
};

}  // namespace

void serveUntilReadable(int stopFd, const std::vector<LoopWatcher*>& watchers)
{
    Round round;
    while (true) {
        round.begin(stopFd);
        for (const auto* watcher : watchers) {
            round.watch(*watcher, std::chrono::steady_clock::now());
        }
        if (!round.wait()) {
            continue;
        }
        if (round.canRead(stopFd)) {
            return;
        }
        if (round.any()) {
            snmp_read2(round.readable());
        }
        snmp_timeout();
        run_alarms();
        netsnmp_check_outstanding_agent_requests();
        snmp_store_if_needed();
        for (auto* watcher : watchers) {
            const bool ready = round.isReady(*watcher);
            const auto now = std::chrono::steady_clock::now();
            if (ready || watcher->deadline() <= now) {
                watcher->proceed(ready, now);
            }
        }
    }
}

}  // namespace talvik
