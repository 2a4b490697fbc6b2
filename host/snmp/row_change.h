#pragma once

#include "host/snmp/column_write.h"
#include "host/snmp/table_snapshot.h"

#include <vector>

namespace talvik {

/// What a SET does to the one row that it names.
struct RowChange {
    enum class Kind { None, Create, Modify, Delete };

    Kind kind = Kind::None;
    std::uint32_t row = 0;
    std::vector<ColumnValue> named;     ///< without the RowStatus
    std::optional<std::size_t> status;  ///< position of the RowStatus variable

    /// Position of the variable that gets an error of the change as a whole.
    std::size_t blamed() const { return status.value_or(0); }
};

/// Makes one change of the `writes` of a request, as far as they tell without the table's rows: a
/// request that only says active(1) is of kind None. An error names the first variable that does
/// not go with those before it.
SetOutcome planChange(const MibTable& table, const std::vector<ColumnWrite>& writes,
                      RowChange& change);

/// Checks `change` against whether the row exists. Not for a create: there the handler tells. A
/// delete of a row that does not exist becomes kind None.
SetOutcome checkExistence(bool exists, RowChange& change);

/// True if `rows` has the row.
bool hasRow(const MibTable& table, const TableSnapshot& rows, std::uint32_t row);

/// What the row holds in the columns that managers write, without RowStatus and aliases; nothing
/// when one of them cannot be read.
std::optional<std::vector<ColumnValue>> valuesOfRow(const MibTable& table,
                                                    const TableSnapshot& rows, std::uint32_t row);

/// The whole row after a modify: what is `named`, and of `current` what neither is named itself
/// nor by an alias.
std::vector<ColumnValue> mergeRow(const std::vector<ColumnValue>& named,
                                  const std::vector<ColumnValue>& current);

}  // namespace talvik
