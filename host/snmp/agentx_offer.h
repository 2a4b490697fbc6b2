#pragma once

#include "host/snmp/library_log.h"
#include "host/snmp/net_snmp.h"

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

/// What the master says to an offer.
struct OfferAnswer {
    enum class Kind {
        Taken,
        Refused,
        None,  ///< none within a second: the master may have taken it or may yet do so
    };

    Kind kind = Kind::None;
    std::string reason;  ///< of a refusal
};

/// Asks the master at the other end of `session`, which may have ended afterwards, to take it.
OfferAnswer offerSubtree(netsnmp_session& session, netsnmp_subtree& subtree, LibraryLog& log);

/// Before the agent ends: the master is not told of each subtree that goes, which takes a second
/// each when it hangs. The end of the session tells it of all.
void stopWithdrawing();

}  // namespace talvik
