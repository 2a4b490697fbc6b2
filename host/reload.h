#pragma once

#include "host/platform/host_log.h"

#include <functional>

namespace talvik {

class StartFiles;

/// What SIGHUP does: reads again what can be read while the agent runs, and says for each thing
/// what came of it or that it takes a restart. On the thread of the agent's loop.
class Reload {
public:
    /// What others do at it. Each says in the log what came of it.
    struct Parts {
        std::function<void()> agentConfiguration;
        std::function<void()> trapSettings;
        std::function<void()> done;  ///< says nothing
    };

    /// All that is referred to outlives it.
    Reload(const LogSettings& log, const StartFiles& files, Parts parts);

    void run();

private:
    void reopenLog() const;

    const LogSettings& log_;
    const StartFiles& files_;
    const Parts parts_;
};

}  // namespace talvik
