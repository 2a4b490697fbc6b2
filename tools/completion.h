#pragma once

#include "tools/command_tree.h"

#include <string>

namespace talvik::ctl {

/// Each is a script that makes the shell complete commands, options and what these may be.
std::string bashCompletion(const CommandEntry& talvikctl);
std::string zshCompletion(const CommandEntry& talvikctl);
std::string fishCompletion(const CommandEntry& talvikctl);

}  // namespace talvik::ctl
