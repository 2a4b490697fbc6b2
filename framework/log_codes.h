#pragma once

/// Message identifiers of the log lines, for the host's log viewer, and the module id that routes
/// them.
namespace talvik {

constexpr int kLogModule = 4;

namespace log_code {

constexpr unsigned long long kRepository =
    0x10014;  ///< repository conditions, a trap delete without a row
constexpr unsigned long long kNotification = 0x1002C;  ///< alarms without a trap, or its OID
constexpr unsigned long long kHandler = 0x1002E;       ///< failures of handlers, what traps say

// The alarm catalogue. Two of these share their number with the groups above.
constexpr unsigned long long kAlarmId = 0x10014;            ///< an alarm id or position refused
constexpr unsigned long long kAlarmNothingThere = 0x10015;  ///< no definitions, no position
constexpr unsigned long long kAlarmCopyFailed = 0x1001D;
constexpr unsigned long long kAlarmUnknown = 0x1001E;
constexpr unsigned long long kAlarmConfig = 0x1002E;     ///< files and texts of definitions
constexpr unsigned long long kAlarmParameter = 0x1002F;  ///< placeholders of alarm texts
constexpr unsigned long long kEnumLiteral = 0x10031;
constexpr unsigned long long kDebugLine = 0xFFFF;

}  // namespace log_code

}  // namespace talvik
