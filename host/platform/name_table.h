#pragma once

#include "host/platform/name_lookup.h"

#include <chrono>
#include <cstddef>
#include <list>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace talvik {

/// How long names are believed and how many there may be.
struct NameLimits {
    using Milliseconds = std::chrono::milliseconds;

    Milliseconds refresh = std::chrono::seconds(60);       ///< after an answer
    Milliseconds firstRetry = std::chrono::seconds(5);     ///< after a failure; then twice that...
    Milliseconds longestRetry = std::chrono::seconds(60);  ///< ...but never more than this
    /// How long the last addresses stay in use while nobody can say what the name stands for now.
    Milliseconds staleFor = std::chrono::hours(1);
    Milliseconds forgottenAfter = std::chrono::minutes(10);  ///< names that nobody retains
    std::size_t unretained = 256;  ///< the most such names; the one asked longest ago goes first
    std::size_t underWay = 64;     ///< the most look-ups at a time; others queue
};

/// A retained name that stopped resolving or resolves again.
struct NameChange {
    std::string name;
    bool resolves;
    std::string reason;  ///< why it does not
};

/// What is known of names, and when to look up which: the rules of the name cache, without its
/// thread. Upper and lower case are the same. Used under the owner's lock.
class NameTable {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Addresses = std::vector<std::string>;

    explicit NameTable(const NameLimits& limits) : limits_(limits) {}

    /// A name that was not known is due at once.
    void retain(const std::string& name, Time now);
    void release(const std::string& name, Time now);

    /// The addresses behind `name`, none while it does not resolve. One that was not known is due
    /// at once. The reference holds until the next call.
    const Addresses& ask(const std::string& name, Time now);

    /// The names to look up now; each is under way until `finish`. Forgets what is old.
    std::vector<std::string> takeDue(Time now);

    /// Notes the end of a look-up. The answer tells what the log should say, if anything.
    std::optional<NameChange> finish(const std::string& name, const LookupAnswer& answer, Time now);

    /// When `takeDue` has something to do next; `Time::max()` if only `finish` can change that.
    Time nextWork() const;

    std::size_t size() const { return entries_.size(); }

private:
    using Due = std::set<std::pair<Time, std::string>>;

    struct Entry {
        unsigned retained = 0;
        bool underWay = false;
        bool reported = false;  ///< the log says that it does not resolve
        Addresses addresses;
        Time goodAt;             ///< when the addresses were last confirmed
        Due::iterator due;       ///< its next look-up, unless one is under way
        Due::node_type resting;  ///< its place in due_ while one is: going back cannot fail
        NameLimits::Milliseconds retry{0};
        Time askedAt;                            ///< while nobody retains it
        std::list<std::string>::iterator asked;  ///< its place in asked_, then
    };

    using Entries = std::unordered_map<std::string, Entry>;

    Entry& known(const std::string& key, Time now);
    void keepAskedShort();
    void forget(Entries::iterator known);
    void apply(Entry& entry, const LookupAnswer& answer, Time now) const;
    NameLimits::Milliseconds pause(Entry& entry, const LookupAnswer& answer) const;

    NameLimits limits_;
    Entries entries_;
    Due due_;
    std::list<std::string> asked_;  ///< names that nobody retains, the one asked longest ago first
    std::size_t underWay_ = 0;
};

}  // namespace talvik
