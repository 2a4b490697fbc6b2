#pragma once

// The only place where net-snmp's headers are included: they depend on their order, not all of them
// are meant for C++, and their configuration header defines names that nothing else should see.
// clang-format off
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wpedantic"
#include <net-snmp/net-snmp-config.h>
extern "C" {
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>
#include <net-snmp/agent/mib_modules.h>
#include <net-snmp/library/large_fd_set.h>
}
#pragma GCC diagnostic pop
// clang-format on

#undef PACKAGE_NAME
#undef PACKAGE_VERSION
#undef PACKAGE_STRING
#undef PACKAGE_TARNAME
#undef PACKAGE_BUGREPORT
#undef ACTION  // a name that ACE uses
