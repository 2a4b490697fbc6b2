#pragma once

#include <cstddef>
#include <cstdint>

namespace talvik::fuzz {

/// Reads any bytes as an alarm record and has both notification handlers build its trap, next to a
/// model that states the rules as plainly as possible; says on standard error what differs and
/// aborts. On success there must be exactly the fourteen bindings with the model's OIDs, syntaxes
/// and values; otherwise the model's result, its line, and bindings that nobody touched. Every log
/// guard must be closed.
///
///     input ::= identifier:u8 cell*
///               identifier: 0 is that of the records that may be events
///     cell  ::= head:u8 length:u8 byte*[length modulo 64]
///               head: bits 0-3 tag (15 is tag 73), bits 4-7 type code (modulo 10)
///
/// The catalogue has the alarms 1 to 3; the location of alarm 3 cannot be filled when there are
/// parameters. A cell that the input cuts off is left out.
void checkAlarmRecord(const std::uint8_t* data, std::size_t size);

}  // namespace talvik::fuzz
