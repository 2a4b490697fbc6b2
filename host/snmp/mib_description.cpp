#include "host/snmp/mib_description.h"

#include "host/snmp/mib_description_reader.h"

#include <algorithm>

namespace talvik {

namespace {

template <typename Object>
const Object* objectAt(const std::vector<Object>& objects, const ObjectId& id)
{
    const auto found = std::find_if(objects.begin(), objects.end(),
                                    [&](const Object& object) { return object.id == id; });
    return found == objects.end() ? nullptr : &*found;
}

}  // namespace

const MibColumn* MibTable::column(unsigned long tag) const
{
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const MibColumn& column) { return column.tag == tag; });
    return found == columns.end() ? nullptr : &*found;
}

MibDescription MibDescription::load(const std::string& path)
{
    return MibDescriptionReader(path).read();
}

const MibTable* MibDescription::table(const ObjectId& id) const
{
    return objectAt(tables_, id);
}

const MibScalar* MibDescription::scalar(const ObjectId& id) const
{
    return objectAt(scalars_, id);
}

const MibNotificationObject* MibDescription::notificationObject(const ObjectId& id) const
{
    return objectAt(notificationObjects_, id);
}

const MibNotification* MibDescription::notification(const ObjectId& id) const
{
    return objectAt(notifications_, id);
}

}  // namespace talvik
