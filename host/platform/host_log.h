#pragma once

#include <spdlog/logger.h>

#include <cstddef>
#include <memory>
#include <string>

namespace talvik {

/// Where log lines go and which are kept.
struct LogSettings {
    std::string level = "info";                         ///< trace, debug, info, warn, error
    std::string file;                                   ///< rotating log file; empty for none
    std::size_t maxFileBytes = std::size_t{10} << 20U;  ///< a file is rotated at this size
    std::size_t maxFiles = 5;                           ///< rotated files that are kept
    bool toStderr = true;
};

/// Applies `settings` to every logger of the process, those made later included. Throws
/// `StartupError` for an unknown level or a log file that cannot be opened; the former settings
/// then stay. Call it before the first thread starts, and at any time later with the same settings,
/// to open the log file anew after another program has moved it.
void configureLog(const LogSettings& settings);

/// The logger called `name`, made on first use. Every line carries time, level and that name. Never
/// null. Callable from any thread.
std::shared_ptr<spdlog::logger> makeLogger(const std::string& name);

/// The reference host's own logger, "host". Never null. Callable from any thread.
std::shared_ptr<spdlog::logger> hostLog();

}  // namespace talvik
