#pragma once

#include <string>

namespace talvik::bench {

/// Writes the back end's store of the state folder `folder`, which is made, with `count` active
/// alarms of the sample catalogue, serial numbers 1 to `count`, and nothing that waits for a host.
void writeSampleAlarms(const std::string& folder, unsigned count);

}  // namespace talvik::bench
