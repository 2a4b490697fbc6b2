#pragma once

#include "host/snmp/request_context.h"

#include <string>

namespace talvik {

/// Who asks and from where, for a log line. The community of v1 and v2c is a secret and stays out.
std::string requesterOf(const CKEL_SnmpContext& context);

}  // namespace talvik
