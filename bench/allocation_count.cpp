#include "bench/allocation_count.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::uint64_t>& count()
{
    static std::atomic<std::uint64_t> calls{0};
    return calls;
}

}  // namespace

void* operator new(std::size_t size)
{
    count().fetch_add(1, std::memory_order_relaxed);
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

std::uint64_t talvik::bench::allocationCount()
{
    return count().load(std::memory_order_relaxed);
}
