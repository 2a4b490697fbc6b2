#pragma once

#include <cstddef>
#include <cstdint>

namespace talvik::fuzz {

/// Reads any bytes as a sequence of operations on the trap destination table and runs it twice, by
/// the handler and by the model; says on standard error what differs and aborts. After each
/// operation both must have the same result or the same exception, log lines, answered rows, and
/// list, and must have handed the list the same record and word.
///
///     input     ::= operation*
///     operation ::= what:u8 word3:u8 cell*[count]
///                   what: bits 0-1 query, create, modify, delete; bit 2 the list cannot be read;
///                   bit 3 the request has no record; bits 4-7 count
///     cell      ::= head:u8 length:u8 byte*[length modulo 64]
///                   head: bits 0-3 tag, bits 4-7 type code (modulo 10)
///
/// An input that ends within an operation ends the sequence there.
void checkTrapTable(const std::uint8_t* data, std::size_t size);

}  // namespace talvik::fuzz
