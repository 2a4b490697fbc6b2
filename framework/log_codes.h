#pragma once

/// Message identifiers of the log lines, for the host's log viewer, and the module id that routes
/// them.
namespace talvik {

constexpr int kLogModule = 4;

}  // namespace talvik
