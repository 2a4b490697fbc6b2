#pragma once

#include "backend/alarm.h"
#include "backend/alarm_tags.h"

#include <string>

namespace talvik::backend {

/// The octets of the record that tells the host of an alarm, as they go over the wire. `clearTime`
/// is 0 for one that was not cleared.
std::string alarmRecord(alarm::Kind kind, const ActiveAlarm& what, std::uint64_t clearTime = 0);

}  // namespace talvik::backend
