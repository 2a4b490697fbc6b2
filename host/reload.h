#pragma once

#include "host/agent_options.h"

#include <list>
#include <string>
#include <utility>
#include <vector>

namespace talvik {

class DeviceConfigFile;
class HealthSource;
class NotificationService;
class SnmpAgent;

/// What SIGHUP does: reads again what can be read while the agent runs, and says for each thing
/// what came of it or that it takes a restart. On the thread of the agent's loop.
class Reload {
public:
    struct Parts {
        SnmpAgent& agent;
        NotificationService& notifications;
        HealthSource& health;
    };

    /// `moduleFiles`, the device configuration and the alarm catalogue that it names are read at
    /// the start only. `options` and `parts` outlive it.
    Reload(const AgentOptions& options, const DeviceConfigFile& device,
           std::list<std::string> moduleFiles, Parts parts);

    void run();

private:
    void reopenLog() const;
    void reportStartFiles() const;

    const AgentOptions& options_;
    const Parts parts_;
    std::vector<std::pair<std::string, std::string>>
        startFiles_;  ///< path, and what tells a change
};

}  // namespace talvik
