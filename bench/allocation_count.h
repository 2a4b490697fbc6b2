#pragma once

#include <cstdint>

namespace talvik::bench {

/// How often this thread has called `operator new` since its start. A program that links
/// allocation_count.cpp counts.
std::uint64_t allocationCount();

}  // namespace talvik::bench
