#pragma once

#include <string>
#include <vector>

namespace talvik::bench {

/// Who may do everything with the agents under measurement, from the loopback.
constexpr const char* kCommunity = "bench";

/// The command line of the agent built beside this program, without the program: its configuration,
/// which is written, and its state lie in `folder`, and it listens on the loopback's `port`.
std::vector<std::string> talvikArguments(const std::string& folder, unsigned port);

}  // namespace talvik::bench
