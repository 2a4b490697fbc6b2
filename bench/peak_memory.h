#pragma once

#include <functional>

namespace talvik::bench {

/// The peak resident memory in KiB of a process that does nothing but `work`. Throws
/// `std::runtime_error` when the work fails.
long peakMemoryOf(const std::function<void()>& work);

}  // namespace talvik::bench
