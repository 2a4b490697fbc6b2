#pragma once

#include "host/platform/name_cache.h"
#include "host/platform/name_table.h"

#include <chrono>
#include <functional>
#include <memory>

namespace talvik {

struct NameCache::Settings {
    NameLimits limits;

    /// Read by every thread that asks.
    std::function<std::chrono::steady_clock::time_point()> clock = &std::chrono::steady_clock::now;

    /// Called once, before the first look-up; an `AresLookup` if empty.
    std::function<std::unique_ptr<NameLookup>()> makeLookup;
};

}  // namespace talvik
