#pragma once

#include "host/snmp/library_log.h"
#include "host/snmp/net_snmp.h"

#include <optional>
#include <string>
#include <vector>

namespace talvik {

/// What this agent serves and an AgentX master can be offered, as the library's
/// `register_mib_reattach` would. The library owns them.
std::vector<netsnmp_subtree*> subtreesToOffer();

/// Whether the master has taken it in the session that is open.
bool isTaken(const netsnmp_subtree* subtree);

/// Until the session ends, when the library forgets it; so only while there is one.
void setTaken(netsnmp_subtree& subtree);

/// Asks the master, which the library has a session with, to take it; that takes a second at most.
/// Returns why it was refused, or nothing. The session may have ended meanwhile.
std::optional<std::string> offerSubtree(netsnmp_subtree& subtree, LibraryLog& log);

}  // namespace talvik
