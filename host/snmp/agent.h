#pragma once

#include "host/loop_watcher.h"
#include "host/snmp/agent_health.h"
#include "host/snmp/agentx_master.h"
#include "host/snmp/configuration_reload.h"
#include "host/snmp/engine_state.h"
#include "host/snmp/library_log.h"
#include "host/snmp/request_bridge.h"
#include "host/snmp/subtree.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace talvik {

/// How the agent is set up.
struct AgentSettings {
    std::string configFile;     ///< access control and all else that net-snmp's configuration knows
    std::string persistentDir;  ///< of net-snmp's own persistent file; exists
    std::vector<std::string>
        listen;  ///< "udp:127.0.0.1:1161"; empty: what the configuration says, or the default
    EngineState engine;                   ///< the engine's identity in this run
    std::optional<AgentxAddress> master;  ///< serve through it instead of listening
};

/// net-snmp's agent library as one object, one a process. Everything happens on the thread that
/// makes it. Life: construct, `serve` the tables and scalars, `configure`, `listen`, `run`.
class SnmpAgent {
public:
    /// Sets the library up; nothing is read yet. Throws `StartupError`.
    explicit SnmpAgent(AgentSettings settings);

    /// Stops serving, deletes the handlers and shuts the library down.
    ~SnmpAgent();

    SnmpAgent(const SnmpAgent&) = delete;
    SnmpAgent& operator=(const SnmpAgent&) = delete;

    /// Serves the tables and scalars of a module: all of them, or none where it throws
    /// `StartupError` because an OID is taken.
    void serve(std::vector<std::unique_ptr<Subtree>> subtrees)
    {
        bridge_->serve(std::move(subtrees));
    }

    /// Serves the agent's own health, which `source` tells, where TALVIK-AGENT-MIB has it. Throws
    /// `StartupError`.
    void serveHealth(std::function<AgentHealth()> source);

    /// What `serve` took, and what came of the requests for it.
    std::vector<ServedObject> served() const { return bridge_->served(); }

    /// Whether there is an AgentX master, and whether managers reach anything here through it.
    AgentHealth::Master masterState() const;

    /// Reads the configuration. Returns the library's warnings about its lines (unknown words, for
    /// example), which do not stop the agent. Throws `StartupError` with all errors when the file
    /// is wrong.
    std::vector<std::string> configure();

    /// Reads the configuration again and takes over access control and users. The log has what came
    /// of it. After `configure`.
    void reloadConfiguration() { reload_->run(); }

    /// Opens the endpoints, or has the master looked for, and says so: "listening on
    /// udp:127.0.0.1:1161", "looking for the AgentX master unix:/run/x". Throws `StartupError` when
    /// an endpoint cannot be opened.
    std::string listen();

    /// Serves requests, and `watchers` beside them, until `stopFd` can be read.
    void run(int stopFd, const std::vector<LoopWatcher*>& watchers = {});

private:
    std::string openEndpoints();

    AgentSettings settings_;
    LibraryLog log_;
    std::unique_ptr<AgentxMaster> master_;  ///< null for an agent that listens itself
    std::unique_ptr<RequestBridge> bridge_;
    std::unique_ptr<RequestBridge> healthBridge_;  ///< not counted among what is served
    std::unique_ptr<ConfigurationReload> reload_;  ///< once it is configured
    bool configured_ = false;
};

}  // namespace talvik
