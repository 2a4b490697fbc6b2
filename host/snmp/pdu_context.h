#pragma once

#include "host/snmp/net_snmp.h"
#include "host/snmp/request_context.h"

namespace talvik {

/// What net-snmp knows of the request under way, as the handlers' context.
CKEL_SnmpContext contextOf(const netsnmp_agent_request_info& info);

}  // namespace talvik
