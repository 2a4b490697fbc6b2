#pragma once

#include <cstddef>
#include <cstdint>

namespace talvik::fuzz {

/// What must hold when any bytes are decoded; says on standard error what does not and aborts.
///
/// - The package accepts what the model of the acceptance rule accepts, with the same records and
/// cells.
/// - Success takes over the header words; failure leaves no record and keeps the header.
/// - Encoding what was decoded gives what can be decoded again, with the same content, where it
/// fits the format (a record
///   that wrapped may hold more bytes of cells than a length field can say).
/// - Both variants of `encode` write the same bytes, and one byte less is refused.
void checkDecode(const std::uint8_t* data, std::size_t size);

}  // namespace talvik::fuzz
