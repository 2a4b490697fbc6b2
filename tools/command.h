#pragma once

#include "tools/exit_status.h"

#include <functional>

namespace CLI {
class App;
}

/// talvikctl is one source a command: each adds its command line to the parent's and leaves behind
/// what is to be run.
namespace talvik::ctl {

/// What the command line asks for; set by the command that is on it. Returns the exit status.
/// Throws `StartupError`.
using Action = std::function<int()>;

/// Adds `talvikctl alarm ...`.
void addAlarmCommands(CLI::App& talvikctl, Action& action);

/// Adds `talvikctl backend ...`.
void addBackendCommands(CLI::App& talvikctl, Action& action);

/// Adds `talvikctl catalogue ...`.
void addCatalogueCommands(CLI::App& talvikctl, Action& action);

/// Adds `talvikctl completion`.
void addCompletionCommand(CLI::App& talvikctl, Action& action);

/// Adds `talvikctl help`.
void addHelpCommand(CLI::App& talvikctl, Action& action);

/// Adds `talvikctl package ...`.
void addPackageCommands(CLI::App& talvikctl, Action& action);

/// Adds `talvikctl trap ...`.
void addTrapCommands(CLI::App& talvikctl, Action& action);

/// Adds `talvikctl watch`.
void addWatchCommand(CLI::App& talvikctl, Action& action);

}  // namespace talvik::ctl
