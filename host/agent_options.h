#pragma once

#include "host/platform/host_log.h"
#include "host/snmp/agentx_address.h"

#include <optional>
#include <string>
#include <vector>

namespace talvik {

/// What the user asked of talvik-agentd; every path is filled in.
struct AgentOptions {
    std::string configFile;
    std::string deviceFile;
    std::string moduleFile;
    std::string moduleFailure = "stop";  ///< or "continue"
    std::string mibDir;
    std::string stateDir;
    std::vector<std::string> listen;  ///< empty: what the agent configuration says, or the default
    std::optional<AgentxAddress> agentx;  ///< the master to serve through instead of listening
    std::string backend = "embedded";
    unsigned backendTimeout = 1000;  ///< milliseconds
    std::string socket;              ///< for talvikctl
    std::string trapSettings;        ///< a file that need not be there
    LogSettings log;
    bool checkOnly = false;

    /// Whether a module that cannot be used leaves an agent that serves all else.
    bool continueWithoutModule() const { return moduleFailure == "continue"; }
};

/// Exit codes of talvik-agentd.
enum ExitCode { kExitOk = 0, kExitCannotStart = 1, kExitUsage = 2 };

/// Reads the command line. Fills `options` and returns nothing, or returns the exit code after it
/// has printed what the user asked for (help, version) or what is wrong.
std::optional<int> parseCommandLine(int argc, const char* const* argv, AgentOptions& options);

}  // namespace talvik
