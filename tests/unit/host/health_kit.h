#pragma once

#include "host/counted_link.h"

#include <chrono>
#include <ctime>

namespace talvik::test {

/// Both clocks of the agent's health, which only a test moves.
class ManualHealthClock {
public:
    HealthClock clock() const
    {
        return {[this] { return steady_; }, [this] { return date_; }};
    }

    void advance(std::chrono::seconds time)
    {
        steady_ += time;
        date_ += time.count();
    }

    std::chrono::steady_clock::time_point steady() const { return steady_; }
    std::time_t date() const { return date_; }

private:
    std::chrono::steady_clock::time_point steady_{std::chrono::hours(1)};
    std::time_t date_ = 1'700'000'000;
};

}  // namespace talvik::test
