#pragma once

/// Message identifiers of the log lines, for the host's log viewer, and the module id that routes
/// them.
namespace talvik {

constexpr int kLogModule = 4;

namespace log_code {

constexpr unsigned long long kRepository =
    0x10014;  ///< repository conditions, a trap delete without a row
constexpr unsigned long long kHandler = 0x1002E;  ///< failures of handlers

}  // namespace log_code

}  // namespace talvik
