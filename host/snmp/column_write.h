#pragma once

#include "host/snmp/mib_description.h"
#include "host/snmp/set_part.h"

#include <cstdint>
#include <optional>

namespace talvik {

/// What one variable asks for, once it is known to be possible.
struct ColumnWrite {
    const MibColumn* column = nullptr;
    std::uint32_t row = 0;  ///< the index
    SnmpValue value;
};

/// The values of a RowStatus column.
namespace row_status {
constexpr long kActive = 1;
constexpr long kCreateAndGo = 4;
constexpr long kDestroy = 6;
}  // namespace row_status

/// Whether `variable` can be written as it stands, whatever else is in the request. The order of
/// the checks is that of RFC 3416, 4.2.5. Fills `write`, or returns the error.
std::optional<SetError> checkWrite(const MibTable& table, const WrittenVariable& variable,
                                   ColumnWrite& write);

}  // namespace talvik
