#include "host/snmp/mib_description_reader.h"

#include "host/snmp/mib_column_reader.h"
#include "host/snmp/mib_element.h"
#include "host/snmp/mib_notification_reader.h"

#include <algorithm>
#include <utility>

namespace talvik {

namespace {

constexpr long kMaxAnswerLifetime = 60000;

/// The position of the column that `entry`, a text, names.
std::size_t positionOf(const MibElement& entry, const MibTable& table)
{
    const auto wanted = entry.asText("expected the name of a column");
    const auto found = std::find_if(table.columns.begin(), table.columns.end(),
                                    [&](const MibColumn& c) { return c.name == wanted; });
    if (found == table.columns.end()) {
        entry.refuse("the table has no column \"" + wanted + "\"");
    }
    return static_cast<std::size_t>(found - table.columns.begin());
}

std::vector<std::size_t> readIndex(const MibElement& element, const MibTable& table)
{
    std::vector<std::size_t> positions;
    for (const auto& entry : element.list("index")) {
        const auto position = positionOf(entry, table);
        const auto& column = table.columns[position];
        if (column.syntax == Syntax::Counter64) {
            entry.refuse("a Counter64 cannot be an index");
        }
        if (column.access == Access::ReadCreate) {
            entry.refuse("an index cannot be written, \"" + column.name + "\" is read-create");
        }
        positions.push_back(position);
    }
    if (positions.empty()) {
        element.at("index").refuse("expected at least one column");
    }
    return positions;
}

unsigned short readRowStatus(const MibElement& element, const MibTable& table)
{
    const auto entry = element.at("rowStatus");
    const auto& column = table.columns[positionOf(entry, table)];
    if (column.syntax != Syntax::Integer || column.access != Access::ReadCreate) {
        entry.refuse("\"" + column.name + "\" is not a read-create INTEGER");
    }
    if (column.aliasOf != 0) {
        entry.refuse("\"" + column.name + "\" stands for another column");
    }
    if (table.index.size() != 1 ||
        table.columns[table.index.front()].syntax == Syntax::OctetString) {
        entry.refuse("rows can be created only where one number is the index");
    }
    return column.tag;
}

void checkNothingIsWritable(const MibElement& element, const MibTable& table)
{
    for (const auto& column : table.columns) {
        if (column.access == Access::ReadCreate) {
            element.refuse("column \"" + column.name +
                           "\" is read-create, but the table names no rowStatus");
        }
    }
}

MibTable readTable(const MibElement& element)
{
    element.expectObject({"name", "oid", "index", "columns"},
                         {"description", "rowStatus", "answerLifetimeMs"});
    MibTable table;
    table.name = element.text("name");
    table.id = element.objectId("oid");
    table.columns = readColumns(element);
    std::sort(table.columns.begin(), table.columns.end(),
              [](const MibColumn& a, const MibColumn& b) { return a.tag < b.tag; });
    table.index = readIndex(element, table);
    if (element.has("rowStatus")) {
        table.rowStatus = readRowStatus(element, table);
    } else {
        checkNothingIsWritable(element, table);
    }
    if (element.has("answerLifetimeMs")) {
        table.answerLifetime =
            std::chrono::milliseconds(element.number("answerLifetimeMs", 0, kMaxAnswerLifetime));
    }
    return table;
}

MibScalar readScalar(const MibElement& element)
{
    element.expectObject({"name", "oid", "tag", "syntax", "access"},
                         {"description", "enumeration", "range", "size"});
    MibScalar scalar;
    scalar.name = element.text("name");
    scalar.id = element.objectId("oid");
    scalar.cell = readScalarCell(element);
    return scalar;
}

using NamedIds = std::vector<std::pair<ObjectId, std::string>>;

template <typename Object>
void append(NamedIds& objects, const std::vector<Object>& more)
{
    for (const auto& object : more) {
        objects.emplace_back(object.id, object.name);
    }
}

void checkObjectIds(const MibElement& top, const ObjectId& root, NamedIds objects)
{
    // In MIB order whatever lies under an object comes directly behind it.
    std::sort(objects.begin(), objects.end());
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const auto& [id, name] = objects[i];
        if (!startsWith(id, root)) {
            top.refuse("\"" + name + "\" at " + toText(id) + " does not lie under the root " +
                       toText(root));
        }
        if (i != 0 && startsWith(id, objects[i - 1].first)) {
            top.refuse("\"" + name + "\" at " + toText(id) + " lies within \"" +
                       objects[i - 1].second + "\" at " + toText(objects[i - 1].first));
        }
    }
}

}  // namespace

MibDescription MibDescriptionReader::read() const
{
    const auto document = parseMibFile(path_);
    const MibElement top(document, path_);
    top.expectObject({"module", "root", "tables", "scalars"},
                     {"description", "notificationObjects", "notifications"});
    MibDescription description;
    description.path_ = path_;
    description.moduleName_ = top.text("module");
    description.root_ = top.objectId("root");
    for (const auto& entry : top.list("tables")) {
        description.tables_.push_back(readTable(entry));
    }
    for (const auto& entry : top.list("scalars")) {
        description.scalars_.push_back(readScalar(entry));
    }
    description.notificationObjects_ = readNotificationObjects(top);
    description.notifications_ = readNotifications(top, description.notificationObjects_);
    NamedIds objects;
    append(objects, description.tables_);
    append(objects, description.scalars_);
    append(objects, description.notificationObjects_);
    append(objects, description.notifications_);
    checkObjectIds(top, description.root_, std::move(objects));
    return description;
}

}  // namespace talvik
