#pragma once

#include "tools/output_options.h"

#include <string>

namespace talvik::ctl {

constexpr unsigned kMaxTimeoutMs = 600000;

/// What `talvikctl backend status` was asked.
struct StatusOptions {
    std::string socket;
    std::string device;
    unsigned timeoutMs = 1000;
    OutputOptions output;
};

/// Asks the back end for the system WWN and prints what came of it. Returns the exit status. Throws
/// `StartupError` when the device configuration or the socket path cannot be used.
int runStatus(const StatusOptions& options);

}  // namespace talvik::ctl
