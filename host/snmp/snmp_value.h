#pragma once

#include "host/snmp/mib_description.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class CTLVCell;

namespace talvik {

/// One value as SNMP shows it: `octets` for an OCTET STRING, `number` otherwise (within the range
/// of the syntax).
struct SnmpValue {
    Syntax syntax = Syntax::Integer;
    std::int64_t number = 0;  ///< a Counter64 keeps its 64 bits
    std::string octets;
};

/// A value and the column that it goes into.
struct ColumnValue {
    const MibColumn* column;
    SnmpValue value;
};

/// The most octets that a cell can carry as a text, which has a NUL behind it there.
constexpr long kMaxTextOctets = 65534;

/// The numbers that `syntax` can hold; of a Counter64 those that this type can tell.
Bounds boundsOf(Syntax syntax);

/// The value of `cell` in `column`. Nothing, with the reason in `problem`, when the cell's type or
/// value does not fit. A string cell loses its terminating NUL.
std::optional<SnmpValue> toSnmpValue(const CTLVCell& cell, const MibColumn& column,
                                     std::string& problem);

/// A cell that carries `value` to the handler as `column` says: a text with its NUL, a number in
/// four bytes or as decimal text. Throws `CKEL_Exception` when it does not fit a cell.
std::unique_ptr<CTLVCell> toCell(const SnmpValue& value, const MibColumn& column);

/// Appends `value` as it stands in an instance's index: a number as one sub-identifier, octets with
/// their count in front. False, with `index` untouched, for a number below 0.
bool appendIndex(const SnmpValue& value, ObjectId& index);

}  // namespace talvik
