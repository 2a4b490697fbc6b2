#pragma once

#include "host/platform/name_lookup.h"

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace talvik::test {

/// What a test knows and decides of the look-ups of a name cache. Outlives the cache.
class LookupScript {
public:
    std::unique_ptr<NameLookup> makeLookup() { return std::make_unique<Lookup>(*this); }

    /// False if it did not come to that within 30 seconds.
    bool waitForStart(const std::string& name)
    {
        return waitUntil([&] { return pending_.count(name) != 0; });
    }

    bool waitForStarts(int count)
    {
        return waitUntil([&] { return starts_ >= count; });
    }

    /// The look-up of `name`, which has begun, ends like this.
    void answer(const std::string& name, const LookupAnswer& answer)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        endings_.emplace_back(pending_.at(name), answer);
        pending_.erase(name);
        changed_.notify_all();
    }

    /// The next look-up of `name` cannot begin.
    void failToStart(const std::string& name)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        failing_.insert(name);
    }

    /// All that have begun end like this.
    void answerAll(const LookupAnswer& answer)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        for (const auto& [name, done] : std::exchange(pending_, {})) {
            endings_.emplace_back(done, answer);
        }
        changed_.notify_all();
    }

    void wake()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        woken_ = true;
        changed_.notify_all();
    }

    /// Waits until the cache has taken every answer and found nothing further to do.
    bool settle()
    {
        return waitUntil([&] { return waiting_ && !woken_ && endings_.empty(); });
    }

    int made() const { return locked(made_); }
    int alive() const { return locked(alive_); }
    int starts() const { return locked(starts_); }
    sigset_t signalsBlocked() const { return locked(signalsBlocked_); }

    int started(const std::string& name) const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto found = started_.find(name);
        return found == started_.end() ? 0 : found->second;
    }

private:
    class Lookup : public NameLookup {
    public:
        explicit Lookup(LookupScript& script) : script_(script)
        {
            const std::lock_guard<std::mutex> lock(script_.mutex_);
            ++script_.made_;
            ++script_.alive_;
        }

        ~Lookup() override
        {
            const std::lock_guard<std::mutex> lock(script_.mutex_);
            --script_.alive_;
            script_.pending_.clear();
        }

        void start(const std::string& name, Done done) override
        {
            const std::lock_guard<std::mutex> lock(script_.mutex_);
            pthread_sigmask(SIG_SETMASK, nullptr, &script_.signalsBlocked_);
            ++script_.starts_;
            if (script_.failing_.erase(name) != 0) {
                script_.changed_.notify_all();
                throw std::bad_alloc();
            }
            ++script_.started_[name];
            script_.pending_[name] = std::move(done);
            script_.changed_.notify_all();
        }

        void wait(std::chrono::milliseconds atMost) override { script_.runEndings(atMost); }
        void wake() noexcept override { script_.wake(); }

    private:
        LookupScript& script_;
    };

    /// A look-up's `wait`. The time is the test's, so a wait for it ends with `wake`.
    void runEndings(std::chrono::milliseconds atMost)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        waiting_ = true;
        changed_.notify_all();
        if (atMost.count() > 0) {
            changed_.wait(lock, [this] { return woken_ || !endings_.empty(); });
        }
        waiting_ = false;
        woken_ = false;
        const auto endings = std::exchange(endings_, {});
        lock.unlock();
        for (const auto& [done, answer] : endings) {
            done(answer);
        }
    }

    template <typename Condition>
    bool waitUntil(Condition condition)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(30), condition);
    }

    template <typename Value>
    Value locked(const Value& value) const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return value;
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, NameLookup::Done> pending_;
    std::deque<std::pair<NameLookup::Done, LookupAnswer>> endings_;
    std::map<std::string, int> started_;
    std::set<std::string> failing_;
    int starts_ = 0;
    int made_ = 0;
    int alive_ = 0;
    bool woken_ = false;
    bool waiting_ = false;
    sigset_t signalsBlocked_{};
};

}  // namespace talvik::test
