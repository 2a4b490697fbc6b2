#pragma once

#include "host/agent_options.h"

namespace talvik {

class HealthSource;
class NotificationService;
class SnmpAgent;
class StartFiles;

/// What SIGHUP does: reads again what can be read while the agent runs, and says for each thing
/// what came of it or that it takes a restart. On the thread of the agent's loop.
class Reload {
public:
    struct Parts {
        SnmpAgent& agent;
        NotificationService& notifications;
        HealthSource& health;
    };

    /// All of these outlive it.
    Reload(const AgentOptions& options, const StartFiles& files, Parts parts);

    void run();

private:
    void reopenLog() const;

    const AgentOptions& options_;
    const StartFiles& files_;
    const Parts parts_;
};

}  // namespace talvik
