#pragma once

#include <cstddef>
#include <string_view>

namespace talvik::test {

/// Watches what the current thread allocates with `new` while it lives; one at a time a thread. The
/// test program's own operators `new` and `delete` report to it.
class AllocationProbe {
public:
    AllocationProbe();
    ~AllocationProbe();

    AllocationProbe(const AllocationProbe&) = delete;
    AllocationProbe& operator=(const AllocationProbe&) = delete;

    /// The allocation after `count` further ones fails, once.
    void failAfter(std::size_t count);

    /// Counts the blocks that still hold `bytes` when they are freed.
    void watchFor(std::string_view bytes);

    std::size_t allocations() const;  ///< so far
    std::size_t largest() const;      ///< size of the largest block asked for
    long live() const;                ///< blocks allocated less blocks freed
    bool failed() const;              ///< an allocation was made to fail
    std::size_t freedWithBytes() const;
};

}  // namespace talvik::test
