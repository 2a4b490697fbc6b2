#pragma once

#include "host/snmp/net_snmp.h"
#include "host/snmp/object_id.h"
#include "host/snmp/snmp_value.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace talvik {

/// Put a name or a value into a variable of a response. All throw `std::bad_alloc`.
void setName(netsnmp_variable_list& variable, const ObjectId& name);
void setName(netsnmp_variable_list& variable, const oid* name, std::size_t length);
void setValue(netsnmp_variable_list& variable, const SnmpValue& value);

/// As above, of the parts of a value: `octets` for an OCTET STRING, else `number`.
void setValue(netsnmp_variable_list& variable, Syntax syntax, std::int64_t number,
              std::string_view octets);

/// The name of `variable` behind `base`; empty when it does not begin with that.
ObjectId suffixOf(const netsnmp_variable_list& variable, const ObjectId& base);

/// The value of a request's variable; nothing for a type that no column has. What may be a Gauge32
/// or an Unsigned32 comes as a Gauge32.
std::optional<SnmpValue> valueOf(const netsnmp_variable_list& variable);

}  // namespace talvik
