#pragma once

#include "host/snmp/net_snmp.h"
#include "host/snmp/object_id.h"

#include <string>

namespace talvik {

/// What answers the requests on one registered subtree of the MIB. Used by the agent's thread only.
class Subtree {
public:
    virtual ~Subtree() = default;

    /// The object's name, and where it lies.
    virtual const std::string& name() const = 0;
    virtual const ObjectId& id() const = 0;

    /// False if net-snmp is to refuse every SET by itself, with notWritable.
    virtual bool isWritable() const = 0;

    /// False if net-snmp is to repeat GETNEXT for a GETBULK, and to check each variable against the
    /// manager's view. True for one that does both itself.
    virtual bool answersBulk() const { return false; }

    /// Answers those of `requests` that are not processed yet, in the mode of `info`. Past the
    /// subtree's end a variable of a GETNEXT stays untouched: the library goes on with the next
    /// subtree. What is thrown becomes genErr and a line in the log.
    virtual void answer(netsnmp_agent_request_info* info, netsnmp_request_info* requests) = 0;

protected:
    Subtree() = default;
    Subtree(const Subtree&) = delete;
    Subtree& operator=(const Subtree&) = delete;
};

}  // namespace talvik
