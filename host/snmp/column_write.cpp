#include "host/snmp/column_write.h"

#include "host/snmp/value_check.h"

namespace talvik {

namespace {

constexpr unsigned long kEntry = 1;
constexpr long kMaxIndex = 2147483647;

/// The column that the variable names; null when there is none.
const MibColumn* columnOf(const MibTable& table, const ObjectId& suffix)
{
    return suffix.size() >= 2 && suffix[0] == kEntry ? table.column(suffix[1]) : nullptr;
}

/// The row that the variable names; nothing when no row can have that index.
std::optional<std::uint32_t> rowOf(const MibTable& table, const ObjectId& suffix)
{
    if (suffix.size() != 3 || suffix[2] < 1 || suffix[2] > kMaxIndex) {
        return std::nullopt;
    }
    const auto& index = table.columns[table.index.front()];
    if (index.range && !isWithin(static_cast<long>(suffix[2]), *index.range)) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(suffix[2]);
}

/// A RowStatus takes fewer values than its enumeration has.
std::optional<SetError> checkColumnValue(const MibTable& table, const MibColumn& column,
                                         const SnmpValue& value)
{
    if (column.tag != table.rowStatus) {
        return checkValue(value, column);
    }
    const bool isOffered = value.number == row_status::kActive ||
                           value.number == row_status::kCreateAndGo ||
                           value.number == row_status::kDestroy;
    return isOffered ? std::nullopt : std::optional(SetError::WrongValue);
}

}  // namespace

std::optional<SetError> checkWrite(const MibTable& table, const WrittenVariable& variable,
                                   ColumnWrite& write)
{
    if (table.rowStatus == 0) {
        return SetError::NotWritable;
    }
    const auto* column = columnOf(table, variable.suffix);
    if (column == nullptr || column->access != Access::ReadCreate) {
        return SetError::NotWritable;
    }
    if (!variable.value || !haveOneType(variable.value->syntax, column->syntax)) {
        return SetError::WrongType;
    }
    if (const auto error = checkColumnValue(table, *column, *variable.value)) {
        return error;
    }
    const auto row = rowOf(table, variable.suffix);
    if (!row) {
        return SetError::NoCreation;
    }
    write = {column, *row, *variable.value};
    write.value.syntax = column->syntax;
    return std::nullopt;
}

}  // namespace talvik
