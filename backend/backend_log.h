#pragma once

#include <spdlog/logger.h>

#include <memory>

namespace talvik::backend {

/// The back end's logger, "backend". Never null. Callable from any thread.
std::shared_ptr<spdlog::logger> backendLog();

}  // namespace talvik::backend
