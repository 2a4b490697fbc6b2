#pragma once

#include "host/snmp/net_snmp.h"
#include "host/snmp/object_id.h"
#include "host/snmp/snmp_value.h"

namespace talvik {

/// Puts name or value into a variable of a response. Both throw `std::bad_alloc`.
void setName(netsnmp_variable_list& variable, const ObjectId& name);
void setValue(netsnmp_variable_list& variable, const SnmpValue& value);

/// The name of `variable` behind `base`; empty when it does not begin with that.
ObjectId suffixOf(const netsnmp_variable_list& variable, const ObjectId& base);

/// The value of a request's variable; nothing for a type that no column has. What may be a Gauge32
/// or an Unsigned32 comes as a Gauge32.
std::optional<SnmpValue> valueOf(const netsnmp_variable_list& variable);

}  // namespace talvik
