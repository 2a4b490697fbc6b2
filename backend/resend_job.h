#pragma once

#include "backend/alarm_store.h"
#include "backend/background_work.h"

#include <cstdint>
#include <mutex>

namespace talvik::backend {

/// Sends all active alarms again, at no more than 200 a second. Callable from any thread.
class ResendJob {
public:
    using Time = BackgroundWork::Time;

    static constexpr std::size_t kStepAlarms = 10;
    static constexpr std::chrono::milliseconds kStepPause{50};

    /// `store` must outlive the job.
    explicit ResendJob(AlarmStore& store) : store_(store) {}

    /// Begins with what is active now; one that is under way starts over. Returns how many alarms
    /// will be sent.
    std::uint32_t start();

    /// When the next step is due; `Time::max()` when there is nothing to do.
    Time deadline() const;

    /// Takes the next step if it is due.
    void proceed(Time now);

private:
    AlarmStore& store_;
    mutable std::mutex mutex_;
    bool running_ = false;          // under mutex_
    Time due_ = Time::min();        // under mutex_: no step before, whatever starts over
    std::uint32_t sentSerial_ = 0;  // under mutex_: the last one that was sent again
    std::uint32_t lastSerial_ = 0;  // under mutex_: later ones came after the start
};

}  // namespace talvik::backend
