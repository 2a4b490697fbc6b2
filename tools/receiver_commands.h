#pragma once

#include "tools/command.h"

namespace talvik::ctl {

/// Adds `status` and `test` to `talvikctl trap`.
void addReceiverCommands(CLI::App& trap, Action& action);

}  // namespace talvik::ctl
