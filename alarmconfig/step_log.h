#pragma once

#include "framework/debug_kit_guard.h"
#include "framework/log_codes.h"

#include <optional>

namespace talvik {

/// The log of a step that rarely has anything to say: its guard opens at the first line, so that
/// silent steps cost nothing.
class StepLog {
public:
    /// `function` is the step's signature and outlives this object.
    explicit StepLog(const char* function) : function_(function) {}

    CKELDebugKitGuard& guard()
    {
        if (!guard_) {
            guard_.emplace(kLogModule, function_);
        }
        return *guard_;
    }

private:
    const char* function_;
    std::optional<CKELDebugKitGuard> guard_;
};

}  // namespace talvik
