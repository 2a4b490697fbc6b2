#pragma once

#include "host/snmp/mib_description.h"

#include <cstdint>
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

/// The value of `cell` under `syntax`. Nothing, with the reason in `problem`, when the cell's type
/// or value does not fit. A string cell loses its terminating NUL.
std::optional<SnmpValue> toSnmpValue(const CTLVCell& cell, Syntax syntax, std::string& problem);

/// Appends `value` as it stands in an instance's index: a number as one sub-identifier, octets with
/// their count in front. False, with `index` untouched, for a number below 0.
bool appendIndex(const SnmpValue& value, ObjectId& index);

}  // namespace talvik
