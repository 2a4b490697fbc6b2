#pragma once

#include "tools/catalogue/finding.h"

#include <cstddef>

namespace talvik::ctl {

class JsonDocument;

struct CheckResult {
    std::size_t alarms = 0;        ///< definitions in the file
    std::size_t enumerations = 0;  ///< enumeration types in the file
    Findings findings;             ///< in the order of the files
};

/// What the module will do with the files. Without `enumerations` (null), as far as the definitions
/// alone tell.
CheckResult checkCatalogue(const JsonDocument& definitions, const JsonDocument* enumerations);

}  // namespace talvik::ctl
