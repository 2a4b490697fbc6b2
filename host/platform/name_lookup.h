#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace talvik {

/// How a look-up ended.
enum class LookupOutcome {
    Found,       ///< there is at least one address
    NoSuchName,  ///< whoever is asked says that there is none
    NoAnswer,    ///< nobody could say: no server, no answer in time, a server's own failure
};

struct LookupAnswer {
    LookupOutcome outcome = LookupOutcome::NoAnswer;
    std::vector<std::string> addresses;  ///< numeric, in the resolver's order; for `Found` only
    std::string reason;                  ///< for the log, unless `Found`
};

/// Looks up names, many at a time. One thread uses it, but for `wake`. Destroying it ends the
/// look-ups under way without waiting; their `Done` is not called any more.
class NameLookup {
public:
    using Done = std::function<void(const LookupAnswer&)>;

    NameLookup() = default;
    virtual ~NameLookup() = default;

    NameLookup(const NameLookup&) = delete;
    NameLookup& operator=(const NameLookup&) = delete;

    /// Begins to look up `name`. `done` is called once, from here or from `wait`.
    virtual void start(const std::string& name, Done done) = 0;

    /// Waits until something was done for a look-up, somebody called `wake`, or `atMost` is over.
    virtual void wait(std::chrono::milliseconds atMost) = 0;

    /// Ends the `wait` under way, or else the next one. Callable from any thread; never blocks.
    virtual void wake() noexcept = 0;
};

}  // namespace talvik
