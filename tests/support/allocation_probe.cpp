#include "tests/support/allocation_probe.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

struct Watch {
    bool active = false;
    bool failing = false;
    bool failed = false;
    std::size_t countdown = 0;
    std::size_t allocations = 0;
    std::size_t largest = 0;
    long live = 0;
    char bytes[64] = {};
    std::size_t byteCount = 0;
    std::size_t freedWithBytes = 0;
};

thread_local Watch watch;

bool failsNow()
{
    if (!watch.failing || watch.countdown-- != 0) {
        return false;
    }
    watch.failing = false;
    watch.failed = true;
    return true;
}

void* allocate(std::size_t size)
{
    if (watch.active) {
        if (failsNow()) {
            return nullptr;
        }
        ++watch.allocations;
        ++watch.live;
        watch.largest = std::max(watch.largest, size);
    }
    auto* block = std::malloc(size == 0 ? 1 : size);
    if (watch.active && watch.byteCount != 0 && block != nullptr) {
        std::memset(block, 0, malloc_usable_size(block));  // what C code has left there counts not
    }
    return block;
}

void* allocateOrThrow(std::size_t size)
{
    if (void* block = allocate(size)) {
        return block;
    }
    throw std::bad_alloc();
}

void release(void* block)
{
    if (watch.active && block != nullptr) {
        --watch.live;
        if (watch.byteCount != 0 &&
            memmem(block, malloc_usable_size(block), watch.bytes, watch.byteCount) != nullptr) {
            ++watch.freedWithBytes;
        }
    }
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size)
{
    return allocateOrThrow(size);
}

void* operator new[](std::size_t size)
{
    return allocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return allocate(size);
}

void operator delete(void* block) noexcept
{
    release(block);
}

void operator delete[](void* block) noexcept
{
    release(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    release(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    release(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept
{
    release(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept
{
    release(block);
}

namespace talvik::test {

AllocationProbe::AllocationProbe()
{
    watch = Watch();
    watch.active = true;
}

AllocationProbe::~AllocationProbe()
{
    watch.active = false;
    watch.failing = false;
}

void AllocationProbe::failAfter(std::size_t count)
{
    watch.countdown = count;
    watch.failing = true;
}

void AllocationProbe::watchFor(std::string_view bytes)
{
    watch.byteCount = std::min(bytes.size(), sizeof watch.bytes);
    std::memcpy(watch.bytes, bytes.data(), watch.byteCount);
}

std::size_t AllocationProbe::allocations() const
{
    return watch.allocations;
}

std::size_t AllocationProbe::largest() const
{
    return watch.largest;
}

long AllocationProbe::live() const
{
    return watch.live;
}

bool AllocationProbe::failed() const
{
    return watch.failed;
}

std::size_t AllocationProbe::freedWithBytes() const
{
    return watch.freedWithBytes;
}

}  // namespace talvik::test
