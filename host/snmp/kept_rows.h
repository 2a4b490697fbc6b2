#pragma once

#include "host/snmp/row_batch.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <map>
#include <utility>

namespace talvik {

/// The rows of a table that were asked for a short while ago, and what is known of the places
/// between them. Kept by stretches: a stretch begins behind an index and knows all rows up to its
/// end. Used by one thread at a time.
class KeptRows {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// The end of a stretch behind which the table has no rows.
    static constexpr std::uint64_t kNoMore = std::numeric_limits<std::uint64_t>::max();

    struct Limits {
        std::chrono::milliseconds lifetime;  ///< of what is known, from when it was added
        std::size_t size;                    ///< bytes of memory, about
    };

    explicit KeptRows(Limits limits) : limits_(limits) {}

    KeptRows(const KeptRows&) = delete;
    KeptRows& operator=(const KeptRows&) = delete;

    /// What is known of the rows behind an index.
    struct Finding {
        enum class Kind { Row, NoMore, Unknown };

        Kind kind = Kind::Unknown;
        const RowBatch* batch = nullptr;  ///< of the first row, until something is changed here
        std::size_t row = 0;              ///< its position there
        std::uint64_t askFrom = 0;        ///< up to where it is known that there are no rows
    };

    /// The first row with a greater index than `after`, at the time `now`.
    Finding firstBehind(std::uint64_t after, Time now);

    /// Adds what lies behind `after` up to `end`, which is `kNoMore` or the index of the last row.
    void add(std::uint64_t after, std::uint64_t end, RowBatch rows, Time now);

    /// The row with `index` is gone.
    void forget(std::uint64_t index);

    /// There is, or may be, a row with `index`: nobody may take it for granted any more that there
    /// is none.
    void expect(std::uint64_t index);

    /// Drops everything.
    void clear();

    /// Drops what is too old, and the oldest of what is too much. What `firstBehind` found before
    /// is gone.
    void trim(Time now);

    /// When `trim` has something to do again; `Time::max()` for never.
    Time nextExpiry() const;

    /// Bytes of memory, about.
    std::size_t size() const { return size_; }

private:
    struct Stretch {
        std::uint64_t end;
        RowBatch rows;
        Time expires;
        std::size_t size;
    };

    using Stretches = std::map<std::uint64_t, Stretch>;  ///< by the index that each begins behind

    Stretches::iterator stretchBehind(std::uint64_t after);
    Stretches::iterator erase(Stretches::iterator stretch);
    bool isStale(const std::pair<Time, std::uint64_t>& entry) const;
    void dropOldest();

    const Limits limits_;
    Stretches stretches_;
    Stretches::iterator last_ = stretches_.end();          ///< what was found last
    std::deque<std::pair<Time, std::uint64_t>> expiries_;  ///< of stretches, some of them gone
    std::size_t size_ = 0;
};

}  // namespace talvik
