#pragma once

#include "tools/catalogue/module_log.h"

#include <cstdint>
#include <string>
#include <vector>

namespace talvik::ctl {

/// An alarm as the module shows it.
struct Expansion {
    bool shown = false;  ///< false when the module refuses; the texts are then empty
    std::uint64_t id = 0;
    std::uint32_t shownId = 0;  ///< what traps carry as the alarm id
    std::string name;
    std::string location;
    std::string detail;
    std::string suggestion;
    std::vector<ModuleLog::Line> log;  ///< what the module warned of, loading included
};

/// Has the module load the two files and fill `params`, the back end's comma-separated values, into
/// the texts of alarm `id`. Throws `StartupError` when it cannot load them or they are no ordinary
/// files. Uses the one catalogue of the process, so one call at a time.
Expansion expandAlarm(const std::string& definitions, const std::string& enumerations,
                      std::uint64_t id, const std::string& params);

}  // namespace talvik::ctl
