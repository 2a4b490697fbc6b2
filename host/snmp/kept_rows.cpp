#include "host/snmp/kept_rows.h"

#include <algorithm>
#include <utility>

namespace talvik {

namespace {

constexpr std::size_t kStretchOverhead = 128;  ///< of the map's node and of what tells its age

}  // namespace

KeptRows::Finding KeptRows::firstBehind(std::uint64_t after, Time now)
{
    while (true) {
        const auto stretch = stretchBehind(after);
        if (stretch == stretches_.end() || stretch->second.expires <= now) {
            return {Finding::Kind::Unknown, nullptr, 0, after};
        }
        const auto& [begin, content] = *stretch;
        const auto& indexes = content.rows.indexes();
        const auto found = std::upper_bound(indexes.begin(), indexes.end(), after);
        if (found != indexes.end()) {
            return {Finding::Kind::Row, &content.rows,
                    static_cast<std::size_t>(found - indexes.begin()), after};
        }
        if (content.end == kNoMore) {
            return {Finding::Kind::NoMore, nullptr, 0, after};
        }
        after = content.end;
    }
}

/// The stretch that knows what lies directly behind `after`.
KeptRows::Stretches::iterator KeptRows::stretchBehind(std::uint64_t after)
{
    const auto knows = [after](Stretches::iterator stretch) {
        return stretch->first <= after && after < stretch->second.end;
    };
    if (last_ != stretches_.end() && knows(last_)) {
        return last_;
    }
    auto next = stretches_.upper_bound(after);
    if (next == stretches_.begin()) {
        return stretches_.end();
    }
    const auto candidate = std::prev(next);
    if (!knows(candidate)) {
        return stretches_.end();
    }
    last_ = candidate;
    return candidate;
}

void KeptRows::add(std::uint64_t after, std::uint64_t end, RowBatch rows, Time now)
{
    if (end <= after) {
        return;
    }
    // What is known already of the same places is older.
    auto next = stretches_.upper_bound(after);
    if (next != stretches_.begin() && std::prev(next)->second.end > after) {
        --next;
    }
    while (next != stretches_.end() && next->first < end) {
        next = erase(next);
    }
    const auto size = rows.size() + kStretchOverhead;
    const auto expires = now + limits_.lifetime;
    expiries_.emplace_back(expires, after);
    last_ = stretches_.emplace(after, Stretch{end, std::move(rows), expires, size}).first;
    size_ += size;
}

void KeptRows::forget(std::uint64_t index)
{
    if (index == 0) {
        return;
    }
    const auto stretch = stretchBehind(index - 1);
    if (stretch == stretches_.end()) {
        return;
    }
    auto& rows = stretch->second.rows;
    const auto found = std::lower_bound(rows.indexes().begin(), rows.indexes().end(), index);
    if (found != rows.indexes().end() && *found == index) {
        rows.erase(static_cast<std::size_t>(found - rows.indexes().begin()));
    }
}

void KeptRows::expect(std::uint64_t index)
{
    if (index == 0) {
        return;
    }
    const auto stretch = stretchBehind(index - 1);
    if (stretch == stretches_.end()) {
        return;
    }
    const auto& indexes = stretch->second.rows.indexes();
    const auto found = std::lower_bound(indexes.begin(), indexes.end(), index);
    if (found != indexes.end() && *found == index) {
        return;
    }
    if (found != indexes.end() || indexes.empty()) {
        erase(stretch);
    } else {
        stretch->second.end = indexes.back();
    }
}

void KeptRows::clear()
{
    stretches_.clear();
    last_ = stretches_.end();
    expiries_.clear();
    size_ = 0;
}

void KeptRows::trim(Time now)
{
    while (!expiries_.empty() &&
           (expiries_.front().first <= now || isStale(expiries_.front()) || size_ > limits_.size)) {
        dropOldest();
    }
}

KeptRows::Time KeptRows::nextExpiry() const
{
    return expiries_.empty() ? Time::max() : expiries_.front().first;
}

KeptRows::Stretches::iterator KeptRows::erase(Stretches::iterator stretch)
{
    size_ -= stretch->second.size;
    last_ = stretches_.end();
    return stretches_.erase(stretch);
}

/// Whether another stretch, or none, begins there by now.
bool KeptRows::isStale(const std::pair<Time, std::uint64_t>& entry) const
{
    const auto stretch = stretches_.find(entry.second);
    return stretch == stretches_.end() || stretch->second.expires != entry.first;
}

void KeptRows::dropOldest()
{
    if (!isStale(expiries_.front())) {
        erase(stretches_.find(expiries_.front().second));
    }
    expiries_.pop_front();
}

}  // namespace talvik
