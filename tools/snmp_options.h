#pragma once

#include "tools/snmp_settings.h"

namespace CLI {
class App;
}

namespace talvik::ctl {

/// Adds to `command` the options that say which agent is asked, and as whom. `settings` must live
/// as long as the command line is parsed.
void addSnmpOptions(CLI::App& command, SnmpSettings& settings);

}  // namespace talvik::ctl
