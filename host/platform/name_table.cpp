#include "host/platform/name_table.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace talvik {

namespace {

/// The name in lower case, whatever the locale.
std::string keyOf(std::string name)
{
    for (char& letter : name) {
        if (letter >= 'A' && letter <= 'Z') {
            letter = static_cast<char>(letter - 'A' + 'a');
        }
    }
    return name;
}

/// `pause` and up to a tenth more, by the name, so that names that came together do not stay
/// together.
NameLimits::Milliseconds spread(const std::string& key, NameLimits::Milliseconds pause)
{
    constexpr std::size_t kSteps = 1024;
    const auto step = static_cast<int>(std::hash<std::string>{}(key) % kSteps);
    return pause + pause * step / static_cast<int>(10 * kSteps);
}

}  // namespace

void NameTable::retain(const std::string& name, Time now)
{
    const auto key = keyOf(name);
    auto& entry = known(key, now);
    if (entry.retained++ == 0) {
        asked_.erase(entry.asked);
    }
}

void NameTable::release(const std::string& name, Time now)
{
    const auto key = keyOf(name);
    const auto found = entries_.find(key);
    if (found == entries_.end() || found->second.retained == 0) {
        return;
    }
    if (found->second.retained == 1) {
        found->second.asked = asked_.insert(asked_.end(), key);
        found->second.askedAt = now;
    }
    if (--found->second.retained == 0) {
        keepAskedShort();
    }
}

const NameTable::Addresses& NameTable::ask(const std::string& name, Time now)
{
    const auto key = keyOf(name);
    auto& entry = known(key, now);
    if (entry.retained == 0) {
        asked_.splice(asked_.end(), asked_, entry.asked);
        entry.askedAt = now;
        keepAskedShort();
    }
    return entry.addresses;
}

/// A new one is due at once, and retained by nobody.
NameTable::Entry& NameTable::known(const std::string& key, Time now)
{
    const auto found = entries_.find(key);
    if (found != entries_.end()) {
        return found->second;
    }
    std::list<std::string> asked{key};
    Due due{{now, key}};
    auto& entry = entries_[key];  // nothing behind this can fail
    entry.asked = asked.begin();
    entry.askedAt = now;
    entry.due = due.begin();
    asked_.splice(asked_.end(), asked);
    due_.merge(due);
    return entry;
}

/// The name asked last stays in any case.
void NameTable::keepAskedShort()
{
    while (asked_.size() > std::max<std::size_t>(limits_.unretained, 1)) {
        forget(entries_.find(asked_.front()));
    }
}

/// A look-up of it that is under way still counts as one until its end.
void NameTable::forget(Entries::iterator known)
{
    if (!known->second.underWay) {
        due_.erase(known->second.due);
    }
    asked_.erase(known->second.asked);
    entries_.erase(known);
}

std::vector<std::string> NameTable::takeDue(Time now)
{
    while (!asked_.empty()) {
        const auto oldest = entries_.find(asked_.front());
        if (now - oldest->second.askedAt < limits_.forgottenAfter) {
            break;
        }
        forget(oldest);
    }
    std::vector<std::string> names;
    for (auto next = due_.begin();
         next != due_.end() && next->first <= now && underWay_ + names.size() < limits_.underWay;
         ++next) {
        names.push_back(next->second);
    }
    // All of them or none: nothing from here on can fail.
    for (const auto& name : names) {
        auto& entry = entries_.find(name)->second;
        entry.resting = due_.extract(entry.due);
        entry.underWay = true;
        ++underWay_;
    }
    return names;
}

std::optional<NameChange> NameTable::finish(const std::string& name, const LookupAnswer& answer,
                                            Time now)
{
    --underWay_;
    const auto found = entries_.find(name);
    if (found == entries_.end()) {
        return std::nullopt;
    }
    auto& entry = found->second;
    // First what cannot fail: whatever becomes of the answer, the name is due again.
    if (!entry.underWay) {
        entry.resting = due_.extract(entry.due);  // forgotten and asked again since
    }
    entry.underWay = false;
    entry.resting.value().first = now + spread(name, pause(entry, answer));
    entry.due = due_.insert(std::move(entry.resting)).position;
    apply(entry, answer, now);

    const bool resolves = !entry.addresses.empty();
    if (entry.retained == 0 || entry.reported == !resolves) {
        return std::nullopt;
    }
    NameChange change{name, resolves, answer.reason};
    entry.reported = !resolves;
    return change;
}

void NameTable::apply(Entry& entry, const LookupAnswer& answer, Time now) const
{
    if (answer.outcome == LookupOutcome::Found) {
        auto addresses = answer.addresses;
        entry.addresses.swap(addresses);
        entry.goodAt = now;
    } else if (answer.outcome == LookupOutcome::NoSuchName ||
               now - entry.goodAt >= limits_.staleFor) {
        entry.addresses.clear();
    }
}

/// How long until the next look-up.
NameLimits::Milliseconds NameTable::pause(Entry& entry, const LookupAnswer& answer) const
{
    if (answer.outcome == LookupOutcome::Found) {
        entry.retry = NameLimits::Milliseconds(0);
        return limits_.refresh;
    }
    entry.retry = entry.retry.count() == 0 ? limits_.firstRetry
                                           : std::min(entry.retry * 2, limits_.longestRetry);
    return entry.retry;
}

NameTable::Time NameTable::nextWork() const
{
    auto next = Time::max();
    if (!due_.empty() && underWay_ < limits_.underWay) {
        next = due_.begin()->first;
    }
    if (!asked_.empty()) {
        next =
            std::min(next, entries_.find(asked_.front())->second.askedAt + limits_.forgottenAfter);
    }
    return next;
}

}  // namespace talvik
