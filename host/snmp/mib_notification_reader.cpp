#include "host/snmp/mib_notification_reader.h"

#include "host/snmp/mib_column_reader.h"

#include <algorithm>
#include <string>
#include <utility>

namespace talvik {

namespace {

template <typename Object>
bool isKnown(const std::vector<Object>& objects, const std::string& name)
{
    return std::any_of(objects.begin(), objects.end(),
                       [&](const Object& object) { return object.name == name; });
}

template <typename Object>
void checkIsNew(const MibElement& element, const std::vector<Object>& objects,
                const std::string& name)
{
    if (isKnown(objects, name)) {
        element.at("name").refuse("name \"" + name + "\" stands here twice");
    }
}

bool readFormat(const MibElement& element, Syntax syntax)
{
    if (!element.has("format")) {
        return false;
    }
    if (syntax != Syntax::OctetString) {
        element.at("format").refuse("only an OCTET STRING can have this");
    }
    const auto written = element.text("format");
    if (written != "dateAndTime") {
        element.at("format").refuse("unknown format \"" + written + "\"; known is dateAndTime");
    }
    return true;
}

MibNotificationObject readObject(const MibElement& element)
{
    element.expectObject({"name", "oid", "syntax"}, {"description", "enumeration", "format"});
    MibNotificationObject object;
    object.name = element.text("name");
    object.id = element.objectId("oid");
    object.syntax = readSyntax(element);
    object.enumeration = readEnumeration(element, object.syntax);
    object.isDateAndTime = readFormat(element, object.syntax);
    return object;
}

std::size_t positionOf(const MibElement& entry, const std::vector<MibNotificationObject>& objects)
{
    const auto wanted = entry.asText("expected the name of a notification object");
    const auto found =
        std::find_if(objects.begin(), objects.end(),
                     [&](const MibNotificationObject& object) { return object.name == wanted; });
    if (found == objects.end()) {
        entry.refuse("there is no notification object \"" + wanted + "\"");
    }
    return static_cast<std::size_t>(found - objects.begin());
}

MibNotification readNotification(const MibElement& element,
                                 const std::vector<MibNotificationObject>& objects)
{
    element.expectObject({"name", "oid", "objects"}, {"description"});
    MibNotification notification;
    notification.name = element.text("name");
    notification.id = element.objectId("oid");
    for (const auto& entry : element.list("objects")) {
        const auto position = positionOf(entry, objects);
        auto& known = notification.objects;
        if (std::find(known.begin(), known.end(), position) != known.end()) {
            entry.refuse("\"" + objects[position].name + "\" stands here twice");
        }
        known.push_back(position);
    }
    return notification;
}

}  // namespace

std::vector<MibNotificationObject> readNotificationObjects(const MibElement& top)
{
    std::vector<MibNotificationObject> objects;
    if (!top.has("notificationObjects")) {
        return objects;
    }
    for (const auto& element : top.list("notificationObjects")) {
        auto object = readObject(element);
        checkIsNew(element, objects, object.name);
        objects.push_back(std::move(object));
    }
    return objects;
}

std::vector<MibNotification> readNotifications(const MibElement& top,
                                               const std::vector<MibNotificationObject>& objects)
{
    std::vector<MibNotification> notifications;
    if (!top.has("notifications")) {
        return notifications;
    }
    for (const auto& element : top.list("notifications")) {
        auto notification = readNotification(element, objects);
        checkIsNew(element, notifications, notification.name);
        checkIsNew(element, objects, notification.name);
        notifications.push_back(std::move(notification));
    }
    return notifications;
}

}  // namespace talvik
