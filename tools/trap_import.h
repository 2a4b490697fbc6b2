#pragma once

#include "tools/command.h"

namespace talvik::ctl {

/// Adds `talvikctl trap import`.
void addTrapImport(CLI::App& trap, Action& action);

}  // namespace talvik::ctl
