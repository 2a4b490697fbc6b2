#pragma once

// The only place of tools/ where net-snmp's headers are included, for the reasons that
// host/snmp/net_snmp.h gives. The client's side alone: nothing of the agent's library.
// clang-format off
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wpedantic"
#include <net-snmp/net-snmp-config.h>
extern "C" {
#include <net-snmp/net-snmp-includes.h>
}
#pragma GCC diagnostic pop
// clang-format on

#undef PACKAGE_NAME
#undef PACKAGE_VERSION
#undef PACKAGE_STRING
#undef PACKAGE_TARNAME
#undef PACKAGE_BUGREPORT
