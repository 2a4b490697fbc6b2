#pragma once

#include "host/snmp/net_snmp.h"
#include "host/snmp/object_id.h"
#include "host/snmp/snmp_value.h"

namespace talvik {

/// Puts name or value into a variable of a response. Both throw `std::bad_alloc`.
void setName(netsnmp_variable_list& variable, const ObjectId& name);
void setValue(netsnmp_variable_list& variable, const SnmpValue& value);

}  // namespace talvik
