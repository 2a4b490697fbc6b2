#pragma once

#include "host/platform/name_table.h"

#include <cstddef>

namespace talvik {

/// Tells the log which names of trap destinations stopped resolving or resolve again: a line each,
/// but when more than 10 change within a minute, one line for the others together at its end. Used
/// by one thread.
class NameLog {
public:
    using Time = NameTable::Time;

    void note(const NameChange& change, Time now);

    /// Writes the line for the others if it is time for it.
    void sumUp(Time now);

    /// When `sumUp` has something to do next, or `Time::max()`.
    Time nextSum() const;

private:
    std::size_t lines_ = 0;
    Time minuteEnds_ = Time::min();
    std::size_t stopped_ = 0;
    std::size_t again_ = 0;
};

}  // namespace talvik
