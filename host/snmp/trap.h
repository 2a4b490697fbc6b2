#pragma once

#include "host/snmp/object_id.h"
#include "host/snmp/snmp_value.h"
#include "trap/trap_dest_info.h"

#include <list>
#include <memory>
#include <vector>

namespace talvik {

/// One variable of a notification.
struct TrapBinding {
    ObjectId name;
    SnmpValue value;
};

/// A notification and who receives it. sysUpTime.0 and snmpTrapOID.0 are not among the bindings;
/// the sender puts them in front (RFC 3416, 4.2.6).
struct Trap {
    ObjectId id;  ///< the value of snmpTrapOID.0
    std::vector<TrapBinding> bindings;
    std::list<tTrapDestInfo> receivers;
};

/// What is still owed for one notification of the back end. Whoever has something left to send or
/// to wait for holds a copy; when the last copy is gone, the notification is settled and may be
/// acknowledged. Null for a notification that nobody waits for.
using Delivery = std::shared_ptr<void>;

}  // namespace talvik
