#pragma once

/// Cell tags of the command that reads the current alarms.
namespace talvik::alarm_batch_tag {

constexpr unsigned short kStart = 3;
constexpr unsigned short kCount = 9;

}  // namespace talvik::alarm_batch_tag

/// Cell tags of an alarm in the back end's answer.
namespace talvik::current_alarm_tag {

constexpr unsigned short kKind = 0;
constexpr unsigned short kAlarmId = 1;
constexpr unsigned short kLevel = 2;
constexpr unsigned short kSerialNo = 3;
constexpr unsigned short kOccurredAt = 4;
constexpr unsigned short kParameters = 8;
constexpr unsigned short kNoAlarm = 4095;  ///< its presence alone says so

}  // namespace talvik::current_alarm_tag

/// Cell tags of a row of the current alarm table; each is the column's number in the MIB.
namespace talvik::alarm_row_tag {

constexpr unsigned short kNodeCode = 1;
constexpr unsigned short kLocationInfo = 2;
constexpr unsigned short kRestoreAdvice = 3;
constexpr unsigned short kFaultTitle = 4;
constexpr unsigned short kFaultType = 5;
constexpr unsigned short kFaultLevel = 6;
constexpr unsigned short kAlarmId = 7;
constexpr unsigned short kFaultTime = 8;
constexpr unsigned short kSerialNo = 9;
constexpr unsigned short kAdditionInfo = 10;
constexpr unsigned short kFaultCategory = 11;
constexpr unsigned short kLocationAlmId = 12;

}  // namespace talvik::alarm_row_tag
