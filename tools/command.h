#pragma once

#include <functional>

namespace CLI {
class App;
}

/// talvikctl is one source a command: each adds its command line to the parent's and leaves behind
/// what is to be run.
namespace talvik::ctl {

/// Exit status of every command.
constexpr int kExitGood = 0;
constexpr int kExitBad = 1;    ///< the command was carried out and what it reports is a failure
constexpr int kExitUsage = 2;  ///< wrong usage, or a file that the command needs cannot be used

/// What the command line asks for; set by the command that is on it. Returns the exit status.
/// Throws `StartupError`.
using Action = std::function<int()>;

/// Adds `talvikctl alarm ...`.
void addAlarmCommands(CLI::App& talvikctl, Action& action);

/// Adds `talvikctl backend ...`.
void addBackendCommands(CLI::App& talvikctl, Action& action);

/// Adds `talvikctl catalogue ...`.
void addCatalogueCommands(CLI::App& talvikctl, Action& action);

/// Adds `talvikctl trap ...`.
void addTrapCommands(CLI::App& talvikctl, Action& action);

}  // namespace talvik::ctl
