#include "host/platform/name_cache.h"

#include "host/platform/ares_lookup.h"
#include "host/platform/destination_address.h"
#include "host/platform/host_log.h"
#include "host/platform/name_cache_settings.h"
#include "host/platform/name_log.h"
#include "host/platform/name_table.h"

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace talvik {

namespace {

using Time = NameTable::Time;
using Milliseconds = std::chrono::milliseconds;

constexpr Milliseconds kLongestWait = std::chrono::hours(1);
constexpr Milliseconds kPauseAfterFailure = std::chrono::seconds(1);

bool isNumeric(const std::string& address)
{
    const auto kind = destinationKind(address);
    return kind == DestinationKind::Ipv4 || kind == DestinationKind::Ipv6;
}

bool needsLookup(const std::string& address)
{
    return destinationKind(address) == DestinationKind::Name;
}

/// While this lives, threads that are started do not take the process's signals.
class BlockedSignals {
public:
    BlockedSignals()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }

    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t before_;
};

}  // namespace

/// The thread and what it shares with those who ask. The lock is held for moments only: never
/// while something is looked up or logged.
class NameCache::Worker {
public:
    explicit Worker(const Settings& settings) : settings_(settings), table_(settings.limits) {}

    ~Worker() { stop(); }

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Calls `work` with the table and the time, and sees to what it has made due.
    template <typename Work>
    void change(Work work)
    {
        const auto now = settings_.clock();
        std::string failure;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            work(table_, now);
            const auto next = table_.nextWork();
            if (!stopped_ && next < awakeAt_) {
                failure = wakeThread(next);
            }
        }
        if (!failure.empty()) {
            hostLog()->error("cannot look up the names of trap destinations: {}; tried again with "
                             "the next question",
                             failure);
        }
    }

    void stop()
    {
        std::thread ending;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            stopped_ = true;
            ending.swap(thread_);
            if (lookup_) {
                lookup_->wake();
            }
        }
        stopping_.notify_all();
        if (ending.joinable()) {
            ending.join();
            const std::lock_guard<std::mutex> lock(mutex_);
            lookup_.reset();
        }
    }

private:
    /// Has the thread look for work by `next`. Called with the lock held. The answer is what the
    /// log should say, if anything.
    std::string wakeThread(Time next)
    {
        try {
            if (!thread_.joinable()) {
                makeThread();
            }
        } catch (const std::exception& error) {
            lookup_.reset();
            return std::exchange(failing_, true) ? "" : error.what();
        }
        failing_ = false;
        awakeAt_ = next;
        lookup_->wake();
        return {};
    }

    void makeThread()
    {
        lookup_ = settings_.makeLookup ? settings_.makeLookup() : std::make_unique<AresLookup>();
        const BlockedSignals blocked;
        thread_ = std::thread([this] { run(); });
    }

    void run() noexcept
    {
        while (!isStopped()) {
            try {
                round();
            } catch (const std::exception& error) {
                hostLog()->error("the look-up of trap destinations failed: {}", error.what());
                std::unique_lock<std::mutex> lock(mutex_);
                stopping_.wait_for(lock, kPauseAfterFailure, [this] { return stopped_; });
            }
        }
    }

    bool isStopped()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return stopped_;
    }

    void round()
    {
        const auto now = settings_.clock();
        const auto due = takeDue(now);
        for (const auto& name : due) {
            begin(name);
        }
        log_.sumUp(now);
        if (due.empty()) {
            lookup_->wait(untilWork(now));
        }
    }

    /// A look-up that cannot begin ends at once: otherwise its name would stay under way for good.
    void begin(const std::string& name)
    {
        std::shared_ptr<bool> ended;
        try {
            ended = std::make_shared<bool>(false);
            lookup_->start(name, [this, name, ended](const LookupAnswer& answer) {
                *ended = true;
                finish(name, answer);
            });
        } catch (const std::exception& error) {
            hostLog()->error("cannot look up {}: {}; tried again later", name, error.what());
            if (!ended || !*ended) {
                finishWithoutAnswer(name);
            }
        }
    }

    void finishWithoutAnswer(const std::string& name) noexcept
    {
        try {
            finish(name, {LookupOutcome::NoAnswer, {}, "not begun"});
        } catch (const std::exception& error) {
            hostLog()->error("cannot note that {} was not looked up: {}", name, error.what());
        }
    }

    std::vector<std::string> takeDue(Time now)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        auto due = table_.takeDue(now);
        awakeAt_ = due.empty() ? table_.nextWork() : now;
        return due;
    }

    Milliseconds untilWork(Time now)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto next = std::min(awakeAt_, log_.nextSum());
        const auto left = std::max(next, now) - now;
        return std::min(kLongestWait, std::chrono::ceil<Milliseconds>(left));
    }

    void finish(const std::string& name, const LookupAnswer& answer)
    {
        const auto now = settings_.clock();
        std::optional<NameChange> change;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            change = table_.finish(name, answer, now);
        }
        if (change) {
            log_.note(*change, now);
        }
    }

    const Settings settings_;
    std::mutex mutex_;
    std::condition_variable stopping_;
    NameTable table_;             ///< under mutex_
    bool stopped_ = false;        ///< under mutex_
    std::thread thread_;          ///< under mutex_
    bool failing_ = false;        ///< under mutex_: the thread cannot be started
    Time awakeAt_ = Time::max();  ///< under mutex_: when the thread looks for work in any case
    /// Set and reset under mutex_; otherwise the thread's own, but for `wake`.
    std::unique_ptr<NameLookup> lookup_;
    NameLog log_;  ///< the thread's own
};

NameCache::NameCache() : NameCache(Settings{}) {}

NameCache::NameCache(const Settings& settings) : worker_(std::make_unique<Worker>(settings))
{
    hostLog();  // so that it outlives this object
}

NameCache::~NameCache() = default;

void NameCache::retain(const std::string& address)
{
    if (needsLookup(address)) {
        worker_->change([&](NameTable& table, Time now) { table.retain(address, now); });
    }
}

void NameCache::release(const std::string& address)
{
    if (needsLookup(address)) {
        worker_->change([&](NameTable& table, Time now) { table.release(address, now); });
    }
}

bool NameCache::resolves(const std::string& address)
{
    bool known = isNumeric(address);
    if (needsLookup(address)) {
        worker_->change(
            [&](NameTable& table, Time now) { known = !table.ask(address, now).empty(); });
    }
    return known;
}

std::vector<std::string> NameCache::addressesOf(const std::string& address)
{
    std::vector<std::string> known;
    if (isNumeric(address)) {
        known.push_back(address);
    } else if (needsLookup(address)) {
        worker_->change([&](NameTable& table, Time now) { known = table.ask(address, now); });
    }
    return known;
}

void NameCache::stop()
{
    worker_->stop();
}

NameCache& nameCache()
{
    // Never destroyed: whoever is destroyed late may still call it.
    static auto& cache = *new NameCache;
    static const struct StopAtExit {
        ~StopAtExit() { cache.stop(); }
    } stopAtExit;
    return cache;
}

void stopNameCache()
{
    nameCache().stop();
}

}  // namespace talvik
