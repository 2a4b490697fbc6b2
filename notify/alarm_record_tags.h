#pragma once

#include <cstdint>

/// Cell tags of the alarm record that the back end reports.
namespace talvik::alarm_tag {

constexpr unsigned short kAlarmId = 1;
constexpr unsigned short kLevel = 2;
constexpr unsigned short kSerialNo = 3;
constexpr unsigned short kOccurredAt = 4;
constexpr unsigned short kClearedAtFirst = 5;      ///< when tag 6 has none
constexpr unsigned short kClearedAtPreferred = 6;  ///< not 0 in either means cleared
constexpr unsigned short kParameters = 8;
constexpr unsigned short kEventFlag = 73;  ///< only in records of `kRecordWithEventFlag`

}  // namespace talvik::alarm_tag

namespace talvik {

/// Identifier of the one kind of record that may be an event.
constexpr std::uint64_t kRecordWithEventFlag = 0xD00C900B6;

/// What `kEventFlag` of an event says.
constexpr unsigned int kIsEvent = 1;

}  // namespace talvik
