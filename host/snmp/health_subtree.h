#pragma once

#include "host/snmp/agent_health.h"
#include "host/snmp/snmp_value.h"
#include "host/snmp/subtree.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace talvik {

/// The instances that TALVIK-AGENT-MIB has for `health`, by ascending OID below `healthRoot()`.
std::vector<std::pair<ObjectId, SnmpValue>> healthInstances(const AgentHealth& health);

/// 1.3.6.1.4.1.99999.2.91.20, which no module uses.
const ObjectId& healthRoot();

/// Serves the agent's own health, read-only. A request sees one moment.
class HealthSubtree : public Subtree {
public:
    explicit HealthSubtree(std::function<AgentHealth()> source);

    const std::string& name() const override { return name_; }
    const ObjectId& id() const override { return healthRoot(); }
    bool isWritable() const override { return false; }
    void answer(netsnmp_agent_request_info* info, netsnmp_request_info* requests) override;

private:
    const std::string name_ = "talvikAgent";
    const std::function<AgentHealth()> source_;
};

}  // namespace talvik
