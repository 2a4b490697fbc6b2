#pragma once

#include <cstdint>

/// Alarm records as the back end keeps, shows and sends them. The module reads the same tags.
namespace talvik::backend::alarm {

/// The identifier of every alarm record: the kind of record whose event flag is looked at.
constexpr std::uint64_t kRecordId = 0xD00C900B6;

constexpr unsigned kKindTag = 0;        ///< 1 byte, a `Kind`
constexpr unsigned kIdTag = 1;          ///< 8 bytes: names the definition in the catalogue
constexpr unsigned kLevelTag = 2;       ///< 4 bytes
constexpr unsigned kSerialTag = 3;      ///< 4 bytes
constexpr unsigned kTimeTag = 4;        ///< 8 bytes, seconds since 1970: when it occurred
constexpr unsigned kOtherClearTag = 5;  ///< 8 bytes, always 0 here
constexpr unsigned kClearTimeTag = 6;   ///< 8 bytes, seconds since 1970; 0 while not cleared
constexpr unsigned kRequesterTag = 7;   ///< text; in a clear request, who asks
constexpr unsigned kParametersTag = 8;  ///< text
constexpr unsigned kCountTag = 9;       ///< 4 bytes; in requests and replies about several alarms
constexpr unsigned kEventFlagTag = 73;  ///< 4 bytes: 1 for an event

/// 4 bytes, always 0: the only cell of the record behind the last active alarm.
constexpr unsigned kEndMarkTag = 4095;

enum class Kind : std::uint8_t {
    Fault = 1,
    Event = 2,
    Clear = 8,
};

}  // namespace talvik::backend::alarm
