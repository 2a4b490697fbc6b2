#pragma once

#include "host/snmp/net_snmp.h"
#include "host/snmp/table_source.h"

#include <string>

namespace talvik {

/// Takes one phase of a SET (RESERVE1 to COMMIT, FREE or UNDO) for the variables of one table. What
/// is to be known from phase to phase is kept with the request under `key`, and goes with it.
void takeSetPhase(TableSource& source, const std::string& key, netsnmp_agent_request_info* info,
                  netsnmp_request_info* requests);

}  // namespace talvik
