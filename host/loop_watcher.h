#pragma once

#include <chrono>

namespace talvik {

/// What the agent's loop serves besides the SNMP library's own descriptors and timers. All calls
/// come from the thread that runs the loop.
class LoopWatcher {
public:
    using Time = std::chrono::steady_clock::time_point;

    virtual ~LoopWatcher() = default;

    /// What to wait for; -1 for nothing but the deadline.
    virtual int descriptor() const = 0;

    /// True while there is something to write to the descriptor; reading is always of interest.
    virtual bool wantsToWrite() const { return false; }

    /// When `proceed` is due at the latest; `Time::max()` for never.
    virtual Time deadline() const = 0;

    /// The descriptor is `ready` or the deadline has passed. Does a bounded piece of work and
    /// never waits; more work is a deadline in the past. Throws nothing but allocation failures.
    virtual void proceed(bool ready, Time now) = 0;

protected:
    LoopWatcher() = default;
    LoopWatcher(const LoopWatcher&) = delete;
    LoopWatcher& operator=(const LoopWatcher&) = delete;
};

}  // namespace talvik
