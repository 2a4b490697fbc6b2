#pragma once

#include "host/platform/host_log.h"

#include <exception>
#include <utility>

namespace talvik {

/// Every function that C code calls back runs its body through this: nothing may be thrown into C.
/// A failure is logged with `where` and becomes `failure`.
template <typename Result, typename Body>
Result guardCallback(const char* where, Result failure, Body&& body) noexcept
{
    try {
        return std::forward<Body>(body)();
    } catch (const std::exception& error) {
        try {
            hostLog()->error("{}: {}", where, error.what());
        } catch (...) {  // the log itself failed: there is nobody left to tell
        }
    } catch (...) {
        try {
            hostLog()->error("{}: unknown exception", where);
        } catch (...) {  // as above
        }
    }
    return failure;
}

}  // namespace talvik
