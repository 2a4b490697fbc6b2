#include "host/snmp/mib_description_reader.h"

#include "host/startup_error.h"

#include <json/reader.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
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

template <typename Table>
std::string alternatives(const Table& names)
{
    std::string text;
    for (const auto& entry : names) {
        text += (text.empty() ? "" : ", ") + std::string(entry.first);
    }
    return text;
}

/// The rules of strict JSON; duplicate members are refused too.
Json::CharReaderBuilder strictReader()
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    return builder;
}

/// JsonCpp reports over several lines; a log line and a terminal want one.
std::string joinLines(const std::string& text)
{
    std::string joined;
    for (const char c : text) {
        const bool blank = c == '\n' || c == ' ' || c == '*';
        if (!blank) {
            joined += c;
        } else if (!joined.empty() && joined.back() != ' ') {
            joined += ' ';
        }
    }
    while (!joined.empty() && joined.back() == ' ') {
        joined.pop_back();
    }
    return joined;
}

}  // namespace

struct MibDescriptionReader::Element {
    const Json::Value* value;
    std::string place;  ///< for messages: "tables[0].columns[2]"

    Element member(const char* name) const
    {
        return {&(*value)[name], place.empty() ? name : place + "." + name};
    }
};

void MibDescriptionReader::refuse(const std::string& place, const std::string& reason) const
{
    throw StartupError("MIB description " + path_ + (place.empty() ? "" : ", " + place) + ": " +
                       reason);
}

Json::Value MibDescriptionReader::parse() const
{
    std::ifstream file(path_, std::ios::binary);
    if (!file) {
        refuse("", std::string("cannot be read: ") + std::strerror(errno));
    }
    Json::Value document;
    std::string errors;
    try {
        if (!Json::parseFromStream(strictReader(), file, &document, &errors)) {
            refuse("", joinLines(errors));
        }
    } catch (const Json::Exception& error) {  // nesting beyond the reader's limit
        refuse("", joinLines(error.what()));
    }
    return document;
}

void MibDescriptionReader::expectObject(const Element& element,
                                        std::initializer_list<const char*> required,
                                        std::initializer_list<const char*> optional) const
{
    if (!element.value->isObject()) {
        refuse(element.place, "expected an object");
    }
    for (const char* name : required) {
        if (!element.value->isMember(name)) {
            refuse(element.place, "lacks the member \"" + std::string(name) + "\"");
        }
    }
    const auto isKnown = [&](const std::string& name) {
        return std::find(required.begin(), required.end(), name) != required.end() ||
               std::find(optional.begin(), optional.end(), name) != optional.end();
    };
    for (const auto& name : element.value->getMemberNames()) {
        if (!isKnown(name)) {
            refuse(element.place, "unknown member \"" + name + "\"");
        }
    }
}

std::vector<MibDescriptionReader::Element> MibDescriptionReader::list(const Element& parent,
                                                                      const char* member) const
{
    const auto all = parent.member(member);
    if (!all.value->isArray()) {
        refuse(all.place, "expected an array");
    }
    std::vector<Element> elements;
    for (Json::ArrayIndex i = 0; i < all.value->size(); ++i) {
        elements.push_back({&(*all.value)[i], all.place + "[" + std::to_string(i) + "]"});
    }
    return elements;
}

std::string MibDescriptionReader::text(const Element& parent, const char* member) const
{
    const auto element = parent.member(member);
    if (!element.value->isString() || element.value->asString().empty()) {
        refuse(element.place, "expected a text that is not empty");
    }
    return element.value->asString();
}

std::string MibDescriptionReader::name(const Element& parent) const
{
    return text(parent, "name");
}

long MibDescriptionReader::number(const Element& parent, const char* member, long low,
                                  long high) const
{
    const auto element = parent.member(member);
    if (!element.value->isInt64() || element.value->asInt64() < low ||
        element.value->asInt64() > high) {
        refuse(element.place,
               "expected a number from " + std::to_string(low) + " to " + std::to_string(high));
    }
    return element.value->asInt64();
}

ObjectId MibDescriptionReader::objectId(const Element& parent, const char* member) const
{
    const auto written = text(parent, member);
    auto id = parseObjectId(written);
    if (!id) {
        refuse(parent.member(member).place,
               "\"" + written + "\" is no object identifier (dotted decimal, no dot in front)");
    }
    return *id;
}

Syntax MibDescriptionReader::syntax(const Element& parent) const
{
    const auto written = text(parent, "syntax");
    for (const auto& [known, value] : kSyntaxes) {
        if (written == known) {
            return value;
        }
    }
    refuse(parent.member("syntax").place,
           "unknown syntax \"" + written + "\"; known are " + alternatives(kSyntaxes));
}

Access MibDescriptionReader::access(const Element& parent) const
{
    const auto written = text(parent, "access");
    for (const auto& [known, value] : kAccesses) {
        if (written == known) {
            return value;
        }
    }
    refuse(parent.member("access").place,
           "unknown access \"" + written + "\"; known are " + alternatives(kAccesses));
}

std::map<long, std::string> MibDescriptionReader::enumeration(const Element& column,
                                                              Syntax syntax) const
{
    std::map<long, std::string> labels;
    if (!column.value->isMember("enumeration")) {
        return labels;
    }
    const auto all = column.member("enumeration");
    if (syntax != Syntax::Integer) {
        refuse(all.place, "only an INTEGER has an enumeration");
    }
    if (!all.value->isObject() || all.value->empty()) {
        refuse(all.place, "expected an object of label and number");
    }
    for (const auto& label : all.value->getMemberNames()) {
        const auto value = number(all, label.c_str(), std::numeric_limits<int>::min(),
                                  std::numeric_limits<int>::max());
        if (!labels.emplace(value, label).second) {
            refuse(all.place, "number " + std::to_string(value) + " stands here twice");
        }
    }
    return labels;
}

MibColumn MibDescriptionReader::column(const Element& element) const
{
    expectObject(element, {"tag", "name", "syntax", "access"}, {"description", "enumeration"});
    MibColumn column;
    column.tag = static_cast<unsigned short>(number(element, "tag", 1, kMaxTag));
    column.name = name(element);
    column.syntax = syntax(element);
    column.access = access(element);
    column.enumeration = enumeration(element, column.syntax);
    return column;
}

std::vector<std::size_t> MibDescriptionReader::index(const Element& element,
                                                     const MibTable& table) const
{
    std::vector<std::size_t> positions;
    for (const auto& entry : list(element, "index")) {
        if (!entry.value->isString()) {
            refuse(entry.place, "expected the name of a column");
        }
        const auto wanted = entry.value->asString();
        const auto found = std::find_if(table.columns.begin(), table.columns.end(),
                                        [&](const MibColumn& c) { return c.name == wanted; });
        if (found == table.columns.end()) {
            refuse(entry.place, "the table has no column \"" + wanted + "\"");
        }
        if (found->syntax == Syntax::Counter64) {
            refuse(entry.place, "a Counter64 cannot be an index");
        }
        positions.push_back(static_cast<std::size_t>(found - table.columns.begin()));
    }
    if (positions.empty()) {
        refuse(element.member("index").place, "expected at least one column");
    }
    return positions;
}

void MibDescriptionReader::checkColumns(const Element& element, const MibTable& table) const
{
    if (table.columns.empty()) {
        refuse(element.member("columns").place, "expected at least one column");
    }
    std::set<std::string> names;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const auto& column = table.columns[i];
        if (i != 0 && column.tag == table.columns[i - 1].tag) {
            refuse(element.member("columns").place,
                   "tag " + std::to_string(column.tag) + " stands here twice");
        }
        if (!names.insert(column.name).second) {
            refuse(element.member("columns").place,
                   "name \"" + column.name + "\" stands here twice");
        }
    }
}

MibTable MibDescriptionReader::table(const Element& element) const
{
    expectObject(element, {"name", "oid", "index", "columns"}, {"description"});
    MibTable table;
    table.name = name(element);
    table.id = objectId(element, "oid");
    for (const auto& entry : list(element, "columns")) {
        table.columns.push_back(column(entry));
    }
    std::stable_sort(table.columns.begin(), table.columns.end(),
                     [](const MibColumn& a, const MibColumn& b) { return a.tag < b.tag; });
    checkColumns(element, table);
    table.index = index(element, table);
    return table;
}

MibScalar MibDescriptionReader::scalar(const Element& element) const
{
    expectObject(element, {"name", "oid", "tag", "syntax", "access"}, {"description"});
    MibScalar scalar;
    scalar.name = name(element);
    scalar.id = objectId(element, "oid");
    scalar.tag = static_cast<unsigned short>(number(element, "tag", 0, kMaxTag));
    scalar.syntax = syntax(element);
    scalar.access = access(element);
    return scalar;
}

void MibDescriptionReader::checkObjectIds(const MibDescription& description) const
{
    std::vector<std::pair<ObjectId, std::string>> objects;
    for (const auto& table : description.tables_) {
        objects.emplace_back(table.id, table.name);
    }
    for (const auto& scalar : description.scalars_) {
        objects.emplace_back(scalar.id, scalar.name);
    }
    // In MIB order whatever lies under an object comes directly behind it.
    std::sort(objects.begin(), objects.end());
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const auto& [id, name] = objects[i];
        if (!startsWith(id, description.root_)) {
            refuse("", "\"" + name + "\" at " + toText(id) + " does not lie under the root " +
                           toText(description.root_));
        }
        if (i != 0 && startsWith(id, objects[i - 1].first)) {
            refuse("", "\"" + name + "\" at " + toText(id) + " lies within \"" +
                           objects[i - 1].second + "\" at " + toText(objects[i - 1].first));
        }
    }
}

MibDescription MibDescriptionReader::read() const
{
    const auto document = parse();
    const Element top{&document, ""};
    expectObject(top, {"module", "root", "tables", "scalars"}, {"description"});
    MibDescription description;
    description.path_ = path_;
    description.moduleName_ = text(top, "module");
    description.root_ = objectId(top, "root");
    for (const auto& entry : list(top, "tables")) {
        description.tables_.push_back(table(entry));
    }
    for (const auto& entry : list(top, "scalars")) {
        description.scalars_.push_back(scalar(entry));
    }
    checkObjectIds(description);
    return description;
}

}  // namespace talvik
