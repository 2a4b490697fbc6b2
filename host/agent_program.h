#pragma once

#include "host/agent_options.h"

namespace talvik {

class StopSignals;

/// Runs the agent until a signal ends it. Throws `StartupError` when it cannot start.
void runAgent(const AgentOptions& options, const StopSignals& signals);

/// Reads and checks everything that `runAgent` would. Throws `StartupError` when something is
/// wrong.
void checkAgent(const AgentOptions& options);

}  // namespace talvik
