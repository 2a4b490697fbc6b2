#pragma once

#include "host/snmp/agent_health.h"

#include <memory>
#include <vector>

namespace talvik {

class Subtree;

/// Answers SNMP requests from what the module serves: one registration with net-snmp's agent
/// library a table or scalar. net-snmp repeats GETNEXT for a GETBULK, and checks each variable
/// against the manager's view, unless a subtree does both itself (`Subtree::answersBulk`). On the
/// agent's thread only.
class RequestBridge {
public:
    RequestBridge();

    /// Takes everything out of the agent again, then deletes the handlers.
    ~RequestBridge();

    RequestBridge(const RequestBridge&) = delete;
    RequestBridge& operator=(const RequestBridge&) = delete;

    /// Serves `subtree`. Call it between the library's `init_agent` and `init_snmp`. Throws
    /// `StartupError` when its OID is taken.
    void serve(std::unique_ptr<Subtree> subtree);

    /// The same for all of `subtrees`; when it throws, none of them is served.
    void serve(std::vector<std::unique_ptr<Subtree>> subtrees);

    /// What is served, by ascending OID, and what came of the requests for it.
    std::vector<ServedObject> served() const;

private:
    class Registration;

    std::vector<std::unique_ptr<Registration>> registrations_;
};

}  // namespace talvik
