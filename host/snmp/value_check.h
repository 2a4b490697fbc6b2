#pragma once

#include "host/snmp/set_error.h"
#include "host/snmp/snmp_value.h"

#include <optional>

namespace talvik {

/// Whether `number` lies within `bounds`, both ends included.
bool isWithin(long number, const Bounds& bounds);

/// On the wire an Unsigned32 and a Gauge32 are one type.
bool haveOneType(Syntax a, Syntax b);

/// Whether `value`, which has the column's type, may stand in `column` as its enumeration, range,
/// size and format say: wrongLength or wrongValue if not.
std::optional<SetError> checkValue(const SnmpValue& value, const MibColumn& column);

}  // namespace talvik
