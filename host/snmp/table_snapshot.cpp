#include "host/snmp/table_snapshot.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace talvik {

namespace {

constexpr unsigned long kEntry = 1;

bool before(const TableSnapshot::Instance& instance, const ObjectId& suffix)
{
    return instance.suffix < suffix;
}

struct IndexedRow {
    ObjectId index;
    const CTLVRecordV3* row;
};

/// Reads indexes and cells, and tells what it cannot read.
class RowReader {
public:
    RowReader(const MibTable& table, const TableSnapshot::ProblemSink& problem)
        : table_(table),
          problem_(problem)
    {
    }

    /// The rows with a usable index, by ascending index; the first one of each index.
    std::vector<IndexedRow> sorted(const std::vector<CTLVRecordV3*>& rows) const
    {
        std::vector<IndexedRow> found;
        found.reserve(rows.size());
        for (const CTLVRecordV3* row : rows) {
            if (auto index = indexOf(*row)) {
                found.push_back({std::move(*index), row});
            }
        }
        std::stable_sort(found.begin(), found.end(), [](const IndexedRow& a, const IndexedRow& b) {
            return a.index < b.index;
        });
        const auto last =
            std::unique(found.begin(), found.end(), [](const IndexedRow& a, const IndexedRow& b) {
                return a.index == b.index;
            });
        for (auto left = found.end() - last; left != 0; --left) {
            problem_("several rows have the same index, only the first is shown");
        }
        found.erase(last, found.end());
        return found;
    }

    std::optional<SnmpValue> valueOf(const CTLVRecordV3& row, const MibColumn& column) const
    {
        const auto place = row.find(column.tag);
        if (place == row.pCells->end()) {
            problem_("column " + column.name + ": row without its cell (tag " +
                     std::to_string(column.tag) + ")");
            return std::nullopt;
        }
        std::string reason;
        auto value = toSnmpValue(**place, column, reason);
        if (!value) {
            problem_("column " + column.name + ": " + reason);
        }
        return value;
    }

private:
    std::optional<ObjectId> indexOf(const CTLVRecordV3& row) const
    {
        ObjectId index;
        for (const auto position : table_.index) {
            const auto& column = table_.columns[position];
            const auto value = valueOf(row, column);
            if (!value) {
                problem_("row left out: no value for its index " + column.name);
                return std::nullopt;
            }
            if (!appendIndex(*value, index)) {
                problem_("row left out: its index " + column.name + " is negative");
                return std::nullopt;
            }
        }
        if (table_.id.size() + 2 + index.size() > kMaxObjectIdLength) {
            problem_("row left out: its index does not fit an object identifier");
            return std::nullopt;
        }
        return index;
    }

    const MibTable& table_;
    const TableSnapshot::ProblemSink& problem_;
};

ObjectId suffixOf(const MibColumn& column, const ObjectId& index)
{
    ObjectId suffix;
    suffix.reserve(2 + index.size());
    suffix.push_back(kEntry);
    suffix.push_back(column.tag);
    suffix.insert(suffix.end(), index.begin(), index.end());
    return suffix;
}

}  // namespace

TableSnapshot::TableSnapshot(const MibTable& table, const CTLVPackageV3<TLVMsgHeadV3>& rows,
                             const ProblemSink& problem)
{
    const RowReader reader(table, problem);
    const auto sorted = reader.sorted(rows.oRecords);
    instances_.reserve(sorted.size() * table.columns.size());
    // Column by column, each by ascending index: that is the order of the MIB.
    for (const auto& column : table.columns) {
        if (column.access == Access::NotAccessible) {
            continue;
        }
        for (const auto& [index, row] : sorted) {
            if (auto value = reader.valueOf(*row, column)) {
                instances_.push_back({suffixOf(column, index), std::move(*value)});
            }
        }
    }
}

const TableSnapshot::Instance* TableSnapshot::at(const ObjectId& suffix) const
{
    const auto* found = after(suffix, true);
    return found != nullptr && found->suffix == suffix ? found : nullptr;
}

const TableSnapshot::Instance* TableSnapshot::after(const ObjectId& suffix, bool inclusive) const
{
    auto found = std::lower_bound(instances_.begin(), instances_.end(), suffix, before);
    if (!inclusive && found != instances_.end() && found->suffix == suffix) {
        ++found;
    }
    return found == instances_.end() ? nullptr : &*found;
}

}  // namespace talvik
