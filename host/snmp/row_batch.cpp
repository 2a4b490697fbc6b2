#include "host/snmp/row_batch.h"

#include "host/snmp/snmp_value.h"
#include "host/snmp/trap_text.h"

#include <algorithm>
#include <limits>

namespace talvik {

namespace {

constexpr unsigned kTypeMask = 0xF;

/// The octets as managers get them: text for people is cleaned, all else stays.
std::string shownOctets(const CTLVCell& cell, std::string octets, std::size_t maxText)
{
    if ((cell.usTagWord & kTypeMask) != CTLVCell::TLV_STRING) {
        return octets;
    }
    return shortened(plainText(std::move(octets)), maxText);
}

}  // namespace

RowBatch::RowBatch(const MibTable& table, const std::vector<CTLVRecordV3*>& records,
                   std::uint64_t after, std::size_t maxText, const ProblemSink& problem)
    : table_(&table),
      maxText_(maxText)
{
    indexes_.reserve(records.size());
    values_.reserve(records.size() * table.columns.size());
    const auto& indexColumn = table.columns[table.index.front()];
    for (const auto* record : records) {
        const auto index = store(*record, indexColumn, table.index.front(), problem);
        if (!index.present || index.number < 0 ||
            index.number > std::numeric_limits<std::uint32_t>::max()) {
            problem("row left out: no value for its index " + indexColumn.name);
            continue;
        }
        const auto number = static_cast<std::uint32_t>(index.number);
        if (number <= (indexes_.empty() ? after : indexes_.back())) {
            problem("row left out: its index " + indexColumn.name + " does not ascend");
            continue;
        }
        indexes_.push_back(number);
        add(*record, problem);
    }
    octets_.shrink_to_fit();
}

void RowBatch::add(const CTLVRecordV3& record, const ProblemSink& problem)
{
    for (std::size_t position = 0; position < table_->columns.size(); ++position) {
        const auto& column = table_->columns[position];
        values_.push_back(column.access == Access::NotAccessible
                              ? Stored()
                              : store(record, column, position, problem));
    }
}

RowBatch::Stored RowBatch::store(const CTLVRecordV3& record, const MibColumn& column,
                                 std::size_t position, const ProblemSink& problem)
{
    const auto place = record.find(column.tag);
    if (place == record.pCells->end()) {
        problem("column " + column.name + ": row without its cell (tag " +
                std::to_string(column.tag) + ")");
        return {};
    }
    std::string reason;
    auto value = toSnmpValue(**place, column, reason);
    if (!value) {
        problem("column " + column.name + ": " + reason);
        return {};
    }
    if (value->syntax != Syntax::OctetString) {
        return {value->number, 0, true};
    }
    const auto octets = shownOctets(**place, std::move(value->octets), maxText_);
    return {keep(octets, position), static_cast<std::uint32_t>(octets.size()), true};
}

std::int64_t RowBatch::keep(const std::string& octets, std::size_t position)
{
    const auto columns = table_->columns.size();
    const auto rows = values_.size() / columns;  // without the one that is being added
    if (rows != 0) {
        const auto former = value(rows - 1, position);
        if (former && former->octets == octets) {
            return values_[(rows - 1) * columns + position].number;
        }
    }
    const auto begin = octets_.size();
    octets_ += octets;
    return static_cast<std::int64_t>(begin);
}

std::optional<RowBatch::Value> RowBatch::value(std::size_t row, std::size_t column) const
{
    const auto& stored = values_[row * table_->columns.size() + column];
    if (!stored.present) {
        return std::nullopt;
    }
    if (table_->columns[column].syntax != Syntax::OctetString) {
        return Value{stored.number, {}};
    }
    return Value{
        0, std::string_view(octets_).substr(static_cast<std::size_t>(stored.number), stored.size)};
}

void RowBatch::erase(std::size_t row)
{
    const auto columns = table_->columns.size();
    indexes_.erase(indexes_.begin() + static_cast<std::ptrdiff_t>(row));
    const auto first = values_.begin() + static_cast<std::ptrdiff_t>(row * columns);
    values_.erase(first, first + static_cast<std::ptrdiff_t>(columns));
}

std::size_t RowBatch::size() const
{
    return sizeof(*this) + indexes_.capacity() * sizeof(indexes_.front()) +
           values_.capacity() * sizeof(values_.front()) + octets_.capacity();
}

}  // namespace talvik
