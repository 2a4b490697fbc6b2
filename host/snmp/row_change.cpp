#include "host/snmp/row_change.h"

#include <algorithm>
#include <set>

namespace talvik {

namespace {

constexpr unsigned long kEntry = 1;

const SnmpValue* cellOf(const TableSnapshot& rows, const MibColumn& column, std::uint32_t row)
{
    const auto* instance = rows.at({kEntry, column.tag, row});
    return instance == nullptr ? nullptr : &instance->value;
}

/// The first variable of another row than the first one's, or of a column that was there before.
SetOutcome checkOneRow(const std::vector<ColumnWrite>& writes)
{
    std::set<unsigned short> tags;
    for (std::size_t i = 0; i < writes.size(); ++i) {
        if (writes[i].row != writes.front().row || !tags.insert(writes[i].column->tag).second) {
            return SetFault{SetError::InconsistentValue, i};
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> statusPosition(const MibTable& table,
                                          const std::vector<ColumnWrite>& writes)
{
    const auto found = std::find_if(writes.begin(), writes.end(), [&](const ColumnWrite& write) {
        return write.column->tag == table.rowStatus;
    });
    return found == writes.end() ? std::nullopt
                                 : std::optional(static_cast<std::size_t>(found - writes.begin()));
}

RowChange::Kind kindOf(std::optional<long> status, bool namesColumns)
{
    if (status == row_status::kCreateAndGo) {
        return RowChange::Kind::Create;
    }
    if (status == row_status::kDestroy) {
        return RowChange::Kind::Delete;
    }
    return namesColumns ? RowChange::Kind::Modify : RowChange::Kind::None;
}

bool isNamed(const std::vector<ColumnValue>& named, const MibColumn& column)
{
    return std::any_of(named.begin(), named.end(), [&](const ColumnValue& value) {
        return value.column->tag == column.tag || value.column->aliasOf == column.tag;
    });
}

bool lacksRequired(const MibTable& table, const RowChange& change)
{
    return std::any_of(table.columns.begin(), table.columns.end(), [&](const MibColumn& column) {
        return column.required && column.tag != table.rowStatus && !isNamed(change.named, column);
    });
}

}  // namespace

SetOutcome planChange(const MibTable& table, const std::vector<ColumnWrite>& writes,
                      RowChange& change)
{
    if (auto fault = checkOneRow(writes)) {
        return fault;
    }
    const auto status = statusPosition(table, writes);
    change.row = writes.front().row;
    change.status = status;
    for (const auto& write : writes) {
        if (write.column->tag != table.rowStatus) {
            change.named.push_back({write.column, write.value});
        }
    }
    change.kind = kindOf(status ? std::optional<long>(writes[*status].value.number) : std::nullopt,
                         !change.named.empty());
    if (change.kind == RowChange::Kind::Delete && !change.named.empty()) {
        return SetFault{SetError::InconsistentValue, change.blamed() == 0 ? std::size_t{1} : 0};
    }
    if (change.kind == RowChange::Kind::Create && lacksRequired(table, change)) {
        return SetFault{SetError::InconsistentValue, change.blamed()};
    }
    return std::nullopt;
}

SetOutcome checkExistence(bool exists, RowChange& change)
{
    if (exists) {
        return std::nullopt;
    }
    if (change.kind == RowChange::Kind::Delete) {
        change.kind = RowChange::Kind::None;
        return std::nullopt;
    }
    // The first variable gets the error: a RowStatus has the wrong value, a column no row.
    return SetFault{change.status == std::size_t{0} || change.kind != RowChange::Kind::Modify
                        ? SetError::InconsistentValue
                        : SetError::InconsistentName,
                    0};
}

bool hasRow(const MibTable& table, const TableSnapshot& rows, std::uint32_t row)
{
    return std::any_of(table.columns.begin(), table.columns.end(), [&](const MibColumn& column) {
        return cellOf(rows, column, row) != nullptr;
    });
}

std::optional<std::vector<ColumnValue>> valuesOfRow(const MibTable& table,
                                                    const TableSnapshot& rows, std::uint32_t row)
{
    std::vector<ColumnValue> values;
    for (const auto& column : table.columns) {
        if (column.access != Access::ReadCreate || column.tag == table.rowStatus ||
            column.aliasOf != 0) {
            continue;
        }
        const auto* value = cellOf(rows, column, row);
        if (value == nullptr) {
            return std::nullopt;
        }
        values.push_back({&column, *value});
    }
    return values;
}

std::vector<ColumnValue> mergeRow(const std::vector<ColumnValue>& named,
                                  const std::vector<ColumnValue>& current)
{
    auto row = named;
    std::copy_if(current.begin(), current.end(), std::back_inserter(row),
                 [&](const ColumnValue& value) { return !isNamed(named, *value.column); });
    return row;
}

}  // namespace talvik
