#include "host/snmp/mib_column_reader.h"

#include "host/snmp/snmp_value.h"

#include <algorithm>
#include <array>
#include <limits>
#include <set>
#include <utility>

namespace talvik {

namespace {

constexpr long kMaxTag = 4095;

template <typename Value, std::size_t Count>
using Names = std::array<std::pair<const char*, Value>, Count>;

constexpr Names<Syntax, 7> kSyntaxes = {{{"INTEGER", Syntax::Integer},
                                         {"Unsigned32", Syntax::Unsigned32},
                                         {"Gauge32", Syntax::Gauge32},
                                         {"Counter32", Syntax::Counter32},
                                         {"Counter64", Syntax::Counter64},
                                         {"TimeTicks", Syntax::TimeTicks},
                                         {"OCTET STRING", Syntax::OctetString}}};

constexpr Names<Access, 4> kAccesses = {{{"not-accessible", Access::NotAccessible},
                                         {"read-only", Access::ReadOnly},
                                         {"read-write", Access::ReadWrite},
                                         {"read-create", Access::ReadCreate}}};

/// The value that the text `member` of `object` names.
template <typename Table>
auto choice(const MibElement& object, const char* member, const Table& names)
{
    const auto written = object.text(member);
    std::string known;
    for (const auto& [name, value] : names) {
        if (written == name) {
            return value;
        }
        known += (known.empty() ? "" : ", ") + std::string(name);
    }
    object.at(member).refuse("unknown " + std::string(member) + " \"" + written + "\"; known are " +
                             known);
}

/// What is special about a column's octets or cells.
enum class Format { None, Destination, DateAndTime };

constexpr Names<Format, 2> kFormats = {
    {{"destination", Format::Destination}, {"dateAndTime", Format::DateAndTime}}};

Format readFormat(const MibElement& column)
{
    return column.has("format") ? choice(column, "format", kFormats) : Format::None;
}

/// For a member that has one value only.
bool isSet(const MibElement& object, const char* member, const char* value)
{
    return object.has(member) && choice(object, member, Names<bool, 1>{{{value, true}}});
}

std::optional<Bounds> readBounds(const MibElement& element, const char* member, const Bounds& limit)
{
    if (!element.has(member)) {
        return std::nullopt;
    }
    const auto ends = element.list(member);
    if (ends.size() != 2) {
        element.at(member).refuse("expected the least and the greatest value");
    }
    const Bounds bounds{ends[0].asNumber(limit.low, limit.high),
                        ends[1].asNumber(limit.low, limit.high)};
    if (bounds.low > bounds.high) {
        element.at(member).refuse("the least value is above the greatest");
    }
    return bounds;
}

/// What only a text, and what only a number may have.
void checkSyntax(const MibElement& element, const MibColumn& column)
{
    const bool isText = column.syntax == Syntax::OctetString;
    for (const char* member : {"range", "cell"}) {
        if (isText && element.has(member)) {
            element.at(member).refuse("an OCTET STRING cannot have this");
        }
    }
    for (const char* member : {"size", "format"}) {
        if (!isText && element.has(member)) {
            element.at(member).refuse("only an OCTET STRING can have this");
        }
    }
    if (element.has("range") && element.has("enumeration")) {
        element.at("range").refuse("an enumeration is its own range");
    }
    if (element.has("cell") && column.syntax == Syntax::Counter64) {
        element.at("cell").refuse("a Counter64 cannot have this");
    }
}

/// What only a column that managers write may have.
void checkAccess(const MibElement& element, const MibColumn& column)
{
    if (column.access == Access::ReadWrite) {
        element.at("access").refuse("a column that managers write is read-create");
    }
    const bool isWritable = column.access == Access::ReadCreate;
    if (isWritable && column.isDateAndTime) {
        element.at("access").refuse("a DateAndTime cannot be written");
    }
    if (!isWritable && column.required) {
        element.at("required").refuse("only a read-create column can be required");
    }
    if (!isWritable && element.has("aliasOf")) {
        element.at("aliasOf").refuse("only a read-create column can stand for another");
    }
}

/// What a column and a scalar have in common.
MibColumn readCell(const MibElement& element, long leastTag)
{
    MibColumn cell;
    cell.tag = static_cast<unsigned short>(element.number("tag", leastTag, kMaxTag));
    cell.name = element.text("name");
    cell.syntax = readSyntax(element);
    cell.access = choice(element, "access", kAccesses);
    cell.enumeration = readEnumeration(element, cell.syntax);
    checkSyntax(element, cell);
    cell.range = readBounds(element, "range", boundsOf(cell.syntax));
    cell.size = readBounds(element, "size", {0, kMaxTextOctets});
    const bool isWritable = cell.access == Access::ReadWrite || cell.access == Access::ReadCreate;
    if (isWritable && (cell.syntax == Syntax::Counter32 || cell.syntax == Syntax::Counter64)) {
        element.at("access").refuse("a counter cannot be written");
    }
    return cell;
}

MibColumn readColumn(const MibElement& element)
{
    element.expectObject(
        {"tag", "name", "syntax", "access"},
        {"description", "enumeration", "range", "size", "cell", "format", "required", "aliasOf"});
    auto column = readCell(element, 1);
    column.textCell = isSet(element, "cell", "text");
    const auto format = readFormat(element);
    column.isDestination = format == Format::Destination;
    column.isDateAndTime = format == Format::DateAndTime;
    column.required = element.has("required") && element.flag("required");
    checkAccess(element, column);
    return column;
}

/// The tag of the column that `element` stands for.
unsigned short readAlias(const MibElement& element, const MibColumn& column,
                         const std::vector<MibColumn>& columns)
{
    const auto wanted = element.text("aliasOf");
    const auto place = element.at("aliasOf");
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const MibColumn& other) { return other.name == wanted; });
    if (found == columns.end()) {
        place.refuse("the table has no column \"" + wanted + "\"");
    }
    if (found->tag == column.tag) {
        place.refuse("a column cannot stand for itself");
    }
    if (found->access != Access::ReadCreate || found->syntax != column.syntax) {
        place.refuse("\"" + wanted + "\" is not read-create or has another syntax");
    }
    return found->tag;
}

void checkUnique(const MibElement& table, const std::vector<MibColumn>& columns)
{
    std::set<unsigned short> tags;
    std::set<std::string> names;
    for (const auto& column : columns) {
        if (!tags.insert(column.tag).second) {
            table.at("columns").refuse("tag " + std::to_string(column.tag) + " stands here twice");
        }
        if (!names.insert(column.name).second) {
            table.at("columns").refuse("name \"" + column.name + "\" stands here twice");
        }
    }
}

}  // namespace

Syntax readSyntax(const MibElement& object)
{
    return choice(object, "syntax", kSyntaxes);
}

std::map<long, std::string> readEnumeration(const MibElement& element, Syntax syntax)
{
    std::map<long, std::string> labels;
    if (!element.has("enumeration")) {
        return labels;
    }
    const auto all = element.at("enumeration");
    if (syntax != Syntax::Integer) {
        all.refuse("only an INTEGER has an enumeration");
    }
    for (const auto& label : all.memberNames()) {
        const auto value =
            all.number(label, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
        if (!labels.emplace(value, label).second) {
            all.refuse("number " + std::to_string(value) + " stands here twice");
        }
    }
    return labels;
}

MibColumn readScalarCell(const MibElement& scalar)
{
    auto cell = readCell(scalar, 0);
    if (cell.access != Access::ReadOnly && cell.access != Access::ReadWrite) {
        scalar.at("access").refuse("a scalar is read-only or read-write");
    }
    return cell;
}

std::vector<MibColumn> readColumns(const MibElement& table)
{
    const auto elements = table.list("columns");
    if (elements.empty()) {
        table.at("columns").refuse("expected at least one column");
    }
    std::vector<MibColumn> columns;
    for (const auto& element : elements) {
        columns.push_back(readColumn(element));
    }
    checkUnique(table, columns);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (elements[i].has("aliasOf")) {
            columns[i].aliasOf = readAlias(elements[i], columns[i], columns);
        }
    }
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const auto other = std::find_if(columns.begin(), columns.end(), [&](const MibColumn& c) {
            return c.tag == columns[i].aliasOf;
        });
        if (other != columns.end() && other->aliasOf != 0) {
            elements[i].at("aliasOf").refuse("\"" + other->name + "\" stands for another itself");
        }
    }
    return columns;
}

}  // namespace talvik
