#pragma once

#include "host/snmp/trap.h"

#include <vector>

namespace talvik {

/// A notification as it goes out, the same for every receiver: its texts are plain and fit.
struct TrapContent {
    ObjectId id;
    unsigned long upTime = 0;  ///< the agent's, in hundredths of a second
    std::vector<TrapBinding> bindings;
};

}  // namespace talvik
