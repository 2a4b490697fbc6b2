#pragma once

#include "host/snmp/mib_description.h"
#include "host/snmp/mib_element.h"

#include <vector>

namespace talvik {

/// The objects that only notifications carry, in the file's order, each with a name and an OID of
/// its own; none when `top` does not have the member. Throws `StartupError`, as everything here
/// does.
std::vector<MibNotificationObject> readNotificationObjects(const MibElement& top);

/// The notifications, in the file's order, which carry some of `objects`.
std::vector<MibNotification> readNotifications(const MibElement& top,
                                               const std::vector<MibNotificationObject>& objects);

}  // namespace talvik
