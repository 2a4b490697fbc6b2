#pragma once

#include <memory>
#include <string>
#include <vector>

namespace talvik {

/// What is known of the names of trap destinations. Names are looked up by a thread of this
/// object's own, which starts at the first name, and again from time to time: `NameLimits` in
/// name_table.h says when. Asking never waits for a look-up. Callable from any thread.
class NameCache {
public:
    /// In name_cache_settings.h.
    struct Settings;

    NameCache();
    explicit NameCache(const Settings& settings);

    /// Ends the look-ups under way without waiting for their answers.
    ~NameCache();

    NameCache(const NameCache&) = delete;
    NameCache& operator=(const NameCache&) = delete;

    /// Keeps `address` up to date until it was released as often as it was retained; the first
    /// look-up begins at once. Numeric addresses need no look-up and are fine here.
    void retain(const std::string& address);
    void release(const std::string& address);

    /// True for a numeric address, and for a name whose last look-up gave an address. A name that
    /// nobody retains is false at first and looked up for the sake of later calls.
    bool resolves(const std::string& address);

    /// The numeric addresses behind `address`, in the resolver's order; itself if it is numeric.
    /// Empty while it does not resolve.
    std::vector<std::string> addressesOf(const std::string& address);

    /// Ends the look-ups under way without waiting for their answers, and the thread. What is known
    /// by then stays; every later call is harmless and looks nothing up.
    void stop();

private:
    class Worker;

    std::unique_ptr<Worker> worker_;
};

/// The process's cache: what `SnmpUtil::TestDomainConnectivity` asks and the trap store feeds.
/// Made at the first call, usable until the process is gone, and stopped at its end if nobody did.
NameCache& nameCache();

/// Stops the process's cache. Call it before `main` ends: later its thread meets a process that is
/// being taken down.
void stopNameCache();

}  // namespace talvik
