#pragma once

#include "tools/active_alarm.h"
#include "tools/text_table.h"

#include <json/json.h>

#include <cstdint>
#include <string>
#include <vector>

namespace talvik::ctl {

/// A table for people, header and one line an alarm; "no active alarms" when there are none.
std::string activeAlarmsText(const std::vector<ActiveAlarm>& alarms, const TableStyle& style = {});

/// What such a table consists of.
TableLine activeAlarmHeading();
TableLine activeAlarmLine(const ActiveAlarm& alarm);

/// [{"serial", "id", "severity", "level", "time", "parameters"}]. The id is a text, as numbers of
/// 64 bits are not safe with every reader; the severity is null for a level without a name.
Json::Value activeAlarmsJson(const std::vector<ActiveAlarm>& alarms);
Json::Value activeAlarmJson(const ActiveAlarm& alarm);

/// A time in seconds since 1970 as ISO 8601 has it, in the local zone: 2026-11-21T20:00:00+01:00.
/// One that no calendar has stays a number.
std::string localIsoTime(std::uint64_t seconds);

}  // namespace talvik::ctl
