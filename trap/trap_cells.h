#pragma once

#include "framework/tlv_record.h"

#include <cstdint>
#include <string>

/// How the trap destination table reads a request's cells and makes those of its rows.
namespace talvik {

/// The cell with `tag`, or null when the record has none. It stays the record's.
const CTLVCell* cellIn(const CTLVRecordV3& record, unsigned short tag);

/// The text of a string cell. Throws `CKEL_Exception` on any other.
std::string textOf(const CTLVCell& cell);

/// The value of a numeric cell. Throws `CKEL_Exception` on any other.
std::uint32_t numberOf(const CTLVCell& cell);

/// Append one cell each; when they throw, no cell is left behind. A text travels with its
/// terminating NUL, a number in four bytes.
void appendText(CTLVRecordV3& record, unsigned short tag, const std::string& text);
void appendNumber(CTLVRecordV3& record, CTLVCell::ETLVType type, unsigned short tag,
                  std::uint32_t value);

}  // namespace talvik
