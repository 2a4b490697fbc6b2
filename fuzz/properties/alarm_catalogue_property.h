#pragma once

#include <cstddef>
#include <cstdint>

namespace talvik::fuzz {

/// Reads any bytes as the two files of an alarm catalogue and loads them twice; says on standard
/// error what is broken and aborts. Nothing but `CKEL_Exception` may leave the loading, the second
/// loading must end as the first did and answer and log the same, every log guard must be closed,
/// and the look-ups of one id must agree with each other.
///
///     input ::= definitions [ 0x00 enumerations ]
///
/// Looked up are 0, 1 and the first numbers that the definitions hold.
void checkAlarmCatalogue(const std::uint8_t* data, std::size_t size);

}  // namespace talvik::fuzz
