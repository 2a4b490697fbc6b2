#pragma once

#include "platform/snmp_context.h"

/// The module looks at nothing in a context, so the fake host's has nothing.
class CKEL_SnmpContext {};
