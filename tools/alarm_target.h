#pragma once

#include "tools/alarm_input.h"

#include <cstdint>

namespace talvik::ctl {

/// Somebody who keeps alarms. Every operation throws `Failure`.
class AlarmTarget {
public:
    virtual ~AlarmTarget() = default;

    /// Each returns the serial number.
    virtual std::uint32_t raise(const AlarmReport& report) = 0;
    virtual std::uint32_t reportEvent(const AlarmReport& report) = 0;

    virtual void clear(std::uint32_t serial) = 0;

protected:
    AlarmTarget() = default;
    AlarmTarget(const AlarmTarget&) = default;
    AlarmTarget& operator=(const AlarmTarget&) = default;
};

}  // namespace talvik::ctl
