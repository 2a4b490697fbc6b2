#pragma once

#include "host/snmp/mib_description.h"
#include "host/snmp/net_snmp.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace talvik {

/// The name of an instance of a table whose index is one number: the table's OID, 1, column, index.
class InstanceName {
public:
    /// The instance in the column at position `column` and in the row with `index`.
    InstanceName(const MibTable& table, std::size_t column, std::uint32_t index);

    const oid* ids() const { return ids_; }
    std::size_t length() const { return length_; }

private:
    oid ids_[MAX_OID_LEN];
    std::size_t length_;
};

/// What the name of a GET says behind the table's OID.
struct NamedColumn {
    std::size_t column;                  ///< its position in the table
    std::optional<std::uint32_t> index;  ///< nothing when the rest of the name is no index
};

/// The column of `variable`'s name; nothing when the table has no such column.
std::optional<NamedColumn> columnOf(const MibTable& table, const netsnmp_variable_list& variable);

/// From where on a GETNEXT looks: a column's position, past the last one if there is nothing, and
/// the index behind which.
struct NextStart {
    std::size_t column;
    std::uint64_t after;
};

/// What follows `variable`'s name, or that name itself if `inclusive`.
NextStart startOf(const MibTable& table, const netsnmp_variable_list& variable, bool inclusive);

}  // namespace talvik
