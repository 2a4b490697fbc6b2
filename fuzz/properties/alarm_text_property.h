#pragma once

#include <cstddef>
#include <cstdint>

namespace talvik::fuzz {

/// Reads any bytes as the texts of an alarm and a back end's parameters and fills the texts twice,
/// by the steps of the catalogue and by the plain ones; says on standard error what differs and
/// aborts. Fields, value pairs, texts, results and log lines must be the same. Where the plain
/// filling does not end, the other must all the same end, and what it delivers be within the bounds
/// of `alarmconfig/alarm_text.h`; when it says that it stopped, it must have succeeded.
///
///     input ::= detail [ 0x00 parameters [ 0x00 location ] ]
///
/// None but the location holds a zero byte.
void checkAlarmText(const std::uint8_t* data, std::size_t size);

}  // namespace talvik::fuzz
