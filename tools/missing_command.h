#pragma once

#include "tools/failure.h"

#include <CLI/CLI.hpp>

#include <optional>

namespace talvik::ctl {

/// Why the command line that `app` has parsed names no command that can be run: a word that is
/// none, or only a group of commands. Nothing if it names one.
std::optional<Failure> missingCommand(const CLI::App& app);

/// Prints it: to standard output in JSON if --json is on the command line, else to standard error.
void printMissingCommand(const CLI::App& app, const Failure& failure);

}  // namespace talvik::ctl
