#pragma once

#include "host/snmp/object_id.h"
#include "host/snmp/trap.h"

#include <optional>
#include <string>

namespace Agentpp {
class Vbx;
}

namespace Snmp_pp {
class Oid;
}

namespace talvik {

/// `oid` as this agent keeps it; empty for an empty or invalid one.
ObjectId toObjectId(const Snmp_pp::Oid& oid);

/// The binding as this agent keeps it. Nothing, with the reason in `problem`, when its name is no
/// object identifier of SNMP (RFC 3416: 2 to 128 sub-identifiers) or its value is none that a
/// notification of this agent carries.
std::optional<TrapBinding> toTrapBinding(const Agentpp::Vbx& binding, std::string& problem);

}  // namespace talvik
