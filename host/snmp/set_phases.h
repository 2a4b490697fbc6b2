#pragma once

#include "host/snmp/net_snmp.h"
#include "host/snmp/object_id.h"
#include "host/snmp/request_context.h"
#include "host/snmp/set_part.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace talvik {

/// Makes the part of a SET that has the variables given.
using SetPartMaker =
    std::function<std::unique_ptr<SetPart>(CKEL_SnmpContext, std::vector<WrittenVariable>)>;

/// Takes one phase of a SET (RESERVE1 to COMMIT, FREE or UNDO) for the variables of the table or
/// scalar at `id`. The part that `make` makes of them is kept with the request under `key`, and
/// goes with it.
void takeSetPhase(const ObjectId& id, const std::string& key, netsnmp_agent_request_info* info,
                  netsnmp_request_info* requests, const SetPartMaker& make);

}  // namespace talvik
