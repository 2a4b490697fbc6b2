#include "host/snmp/instance_name.h"

#include <algorithm>

namespace talvik {

namespace {

constexpr oid kEntry = 1;
constexpr std::size_t kInstanceLength = 3;  ///< entry, column, index

/// What a name says behind the table's OID.
struct Suffix {
    const oid* at = nullptr;
    std::size_t length = 0;

    oid operator[](std::size_t position) const { return at[position]; }
};

Suffix suffixOf(const MibTable& table, const netsnmp_variable_list& variable)
{
    const auto base = table.id.size();
    if (variable.name_length <= base ||
        !std::equal(table.id.begin(), table.id.end(), variable.name)) {
        return {};
    }
    return {variable.name + base, variable.name_length - base};
}

/// The position of the first column with `tag` or a greater one.
std::size_t columnFrom(const MibTable& table, oid tag)
{
    const auto found =
        std::lower_bound(table.columns.begin(), table.columns.end(), tag,
                         [](const MibColumn& column, oid least) { return column.tag < least; });
    return static_cast<std::size_t>(found - table.columns.begin());
}

bool isColumn(const MibTable& table, std::size_t position, oid tag)
{
    return position < table.columns.size() && table.columns[position].tag == tag;
}

}  // namespace

InstanceName::InstanceName(const MibTable& table, std::size_t column, std::uint32_t index)
    : length_(table.id.size() + kInstanceLength)
{
    auto* const end = std::copy(table.id.begin(), table.id.end(), ids_);
    end[0] = kEntry;
    end[1] = table.columns[column].tag;
    end[2] = index;
}

std::optional<NamedColumn> columnOf(const MibTable& table, const netsnmp_variable_list& variable)
{
    const auto suffix = suffixOf(table, variable);
    if (suffix.length < 2 || suffix[0] != kEntry) {
        return std::nullopt;
    }
    const auto position = columnFrom(table, suffix[1]);
    if (!isColumn(table, position, suffix[1])) {
        return std::nullopt;
    }
    NamedColumn named{position, std::nullopt};
    if (suffix.length == kInstanceLength) {
        named.index = static_cast<std::uint32_t>(suffix[2]);
    }
    return named;
}

NextStart startOf(const MibTable& table, const netsnmp_variable_list& variable, bool inclusive)
{
    const auto suffix = suffixOf(table, variable);
    if (suffix.length == 0 || suffix[0] < kEntry) {
        return {0, 0};
    }
    if (suffix[0] > kEntry) {
        return {table.columns.size(), 0};
    }
    if (suffix.length == 1) {
        return {0, 0};
    }
    const auto column = columnFrom(table, suffix[1]);
    if (suffix.length == 2 || !isColumn(table, column, suffix[1])) {
        return {column, 0};
    }
    const bool itself = inclusive && suffix.length == kInstanceLength && suffix[2] != 0;
    return {column, itself ? suffix[2] - 1 : suffix[2]};
}

}  // namespace talvik
