#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <spdlog/logger.h>

namespace talvik {

/// Where log lines go and which are kept.
struct LogSettings {
    std::string level = "info";                          ///< trace, debug, info, warn, error
    std::string file;                                    ///< rotating log file; empty for none
    std::size_t maxFileBytes = std::size_t{10} << 20U;   ///< a file is rotated at this size
    std::size_t maxFiles = 5;                            ///< rotated files that are kept
    bool toStderr = true;
};

/// Applies `settings` to every logger of the process, those made later included. Throws `StartupError` for an unknown
/// level or a log file that cannot be opened. Call it before the first thread starts.
void configureLog(const LogSettings& settings);

/// The reference host's own logger, "host". Never null. Callable from any thread.
std::shared_ptr<spdlog::logger> hostLog();

}  // namespace talvik
