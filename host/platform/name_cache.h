#pragma once

#include <memory>
#include <string>
#include <vector>

namespace talvik {

/// What is known of the names of trap destinations. Names are looked up by a thread of this
/// object's own and again from time to time; asking never waits for a look-up. Callable from any
/// thread.
class NameCache {
public:
    /// How long things last, in milliseconds.
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

private:
    class Worker;

    std::unique_ptr<Worker> worker_;
};

/// The process's cache: what `SnmpUtil::TestDomainConnectivity` asks and the trap store feeds.
/// Never null; made at the first call. Call `stopNameCache` before `main` ends.
NameCache& nameCache();
void stopNameCache();

}  // namespace talvik
