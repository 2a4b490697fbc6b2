#include "host/snmp/table_snapshot.h"

#include <algorithm>
#include <optional>
#include <set>

namespace talvik {

namespace {

constexpr unsigned long kEntry = 1;

bool before(const TableSnapshot::Instance& instance, const ObjectId& suffix)
{
    return instance.suffix < suffix;
}

/// Turns one row after the other into instances.
class RowReader {
public:
    RowReader(const MibTable& table, const TableSnapshot::ProblemSink& problem,
              std::vector<TableSnapshot::Instance>& instances)
        : table_(table),
          problem_(problem),
          instances_(instances)
    {
    }

    void read(const CTLVRecordV3& row)
    {
        const auto index = indexOf(row);
        if (!index) {
            return;
        }
        if (!indexes_.insert(*index).second) {
            problem_("several rows have the same index, only the first is shown");
            return;
        }
        for (const auto& column : table_.columns) {
            if (column.access != Access::NotAccessible) {
                readCell(row, column, *index);
            }
        }
    }

private:
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

    void readCell(const CTLVRecordV3& row, const MibColumn& column, const ObjectId& index)
    {
        auto value = valueOf(row, column);
        if (!value) {
            return;
        }
        ObjectId suffix{kEntry, column.tag};
        suffix.insert(suffix.end(), index.begin(), index.end());
        instances_.push_back({std::move(suffix), std::move(*value)});
    }

    const MibTable& table_;
    const TableSnapshot::ProblemSink& problem_;
    std::vector<TableSnapshot::Instance>& instances_;
    std::set<ObjectId> indexes_;
};

}  // namespace

TableSnapshot::TableSnapshot(const MibTable& table, const CTLVPackageV3<TLVMsgHeadV3>& rows,
                             const ProblemSink& problem)
{
    RowReader reader(table, problem, instances_);
    for (const CTLVRecordV3* row : rows.oRecords) {
        reader.read(*row);
    }
    std::sort(instances_.begin(), instances_.end(),
              [](const Instance& a, const Instance& b) { return a.suffix < b.suffix; });
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
