#pragma once

#include "host/snmp/trap.h"

#include <list>
#include <string>

namespace talvik {

/// coldStart or warmStart (RFC 3418), for every receiver whatever its type.
Trap coldStart(const std::list<tTrapDestInfo>& receivers);
Trap warmStart(const std::list<tTrapDestInfo>& receivers);

/// A notification that says of itself that it is a test, with the objects of an alarm's: an OID of
/// its own, the title "Test trap", category event, alarm id and serial number 0, the time now.
Trap testTrap(const tTrapDestInfo& receiver);

/// Tells whether the agent's configuration may have changed since it last ran, which is the
/// difference between the two starts. `files` are compared by size and time of change with what the
/// last call with the same `stateDirectory` noted there. True also when there is no such note, and,
/// with a log line, when it cannot be read or written.
bool configurationMayHaveChanged(const std::string& stateDirectory,
                                 const std::list<std::string>& files);

}  // namespace talvik
