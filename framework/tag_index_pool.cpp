#include "framework/tag_index_pool.h"

#include "framework/tlv_record.h"

#include <ace/Malloc_Allocator.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <new>

namespace talvik {

namespace {

constexpr std::size_t kEntrySize = sizeof(CTLVRecordV3::TagIndex::value_type);

/// The table and the entries of one index, side by side behind this object: the map's two
/// allocators in one. Why: a table of 32 buckets taken from malloc alone costs as much as the rest
/// of a record, and entries one by one as much as their cells. Entries are handed out in order and
/// counted; only when all are back does the order start again, which is all that a record asks for
/// (it binds cells, then drops them together).
class TagIndexMemory final : public ACE_New_Allocator {
public:
    static constexpr std::size_t sizeFor(std::size_t buckets, std::size_t entries)
    {
        return sizeof(TagIndexMemory) + (buckets + entries) * kEntrySize;
    }

    TagIndexMemory(std::size_t buckets, std::size_t entries)
        : firstEntry_(begin() + buckets * kEntrySize),
          nextEntry_(firstEntry_),
          end_(firstEntry_ + entries * kEntrySize)
    {
    }

    void* malloc(std::size_t size) override;
    void free(void* block) override;

private:
    char* begin() { return reinterpret_cast<char*>(this + 1); }

    char* firstEntry_;
    char* nextEntry_;
    char* end_;
    std::size_t entriesInUse_ = 0;
    bool tableGiven_ = false;
};

constexpr std::size_t kPooledSize =
    TagIndexMemory::sizeFor(CTLVRecordV3::MIN_BUCKETS, CTLVRecordV3::MIN_BUCKETS);
static_assert(sizeof(TagIndexMemory) % alignof(std::max_align_t) == 0,
              "the table stands right behind the object");

struct alignas(std::max_align_t) PooledMemory {
    std::byte bytes[kPooledSize];
};

/// Free blocks as a stack whose head holds a number of the top block (from 1; 0 for none) and,
/// above it, a count of all changes so far, so that a head that went and came back is not taken for
/// one that stayed.
class BlockStack {
public:
    /// A free block, or null when there is none.
    void* pop();

    /// Takes a block of the pool back; false when it is none.
    bool push(void* block);

private:
    static constexpr std::uint64_t kNumberBits = 16;
    static constexpr std::uint64_t kNumberMask = (std::uint64_t{1} << kNumberBits) - 1;

    static std::uint64_t changed(std::uint64_t head, std::uint64_t number)
    {
        return (((head >> kNumberBits) + 1) << kNumberBits) | number;
    }

    // Without initializers on purpose: static storage starts as zeros, so nothing runs when the
    // image is loaded.
    std::atomic<std::uint64_t> head_;
    std::atomic<std::size_t> everUsed_;  // the blocks behind were never taken
    std::atomic<std::uint16_t>
        below_[kPooledTagIndexes + 1];  // by number: the next block in the stack
    PooledMemory blocks_[kPooledTagIndexes];
};

void* BlockStack::pop()
{
    auto head = head_.load(std::memory_order_acquire);
    while ((head & kNumberMask) != 0) {
        const auto number = head & kNumberMask;
        const auto next = below_[number].load(std::memory_order_relaxed);
        if (head_.compare_exchange_weak(head, changed(head, next), std::memory_order_acquire)) {
            return &blocks_[number - 1];
        }
    }
    if (everUsed_.load(std::memory_order_relaxed) < kPooledTagIndexes) {
        const auto fresh = everUsed_.fetch_add(1, std::memory_order_relaxed);
        return fresh < kPooledTagIndexes ? &blocks_[fresh] : nullptr;
    }
    return nullptr;
}

bool BlockStack::push(void* block)
{
    const auto offset =
        reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(&blocks_[0]);
    if (offset >= sizeof blocks_) {
        return false;
    }
    const auto number = static_cast<std::uint16_t>(offset / sizeof(PooledMemory) + 1);
    auto head = head_.load(std::memory_order_relaxed);
    do {
        below_[number].store(static_cast<std::uint16_t>(head & kNumberMask),
                             std::memory_order_relaxed);
    } while (!head_.compare_exchange_weak(head, changed(head, number), std::memory_order_release,
                                          std::memory_order_relaxed));
    return true;
}

BlockStack pool;

void release(TagIndexMemory* memory)
{
    memory->~TagIndexMemory();
    if (!kTagIndexPooling || !pool.push(memory)) {
        ::operator delete(memory);
    }
}

void* TagIndexMemory::malloc(std::size_t size)
{
    if (!tableGiven_) {
        tableGiven_ = true;
        return begin();
    }
    if (size != kEntrySize || nextEntry_ == end_) {
        return ACE_New_Allocator::malloc(size);
    }
    ++entriesInUse_;
    char* entry = nextEntry_;
    nextEntry_ += kEntrySize;
    return entry;
}

void TagIndexMemory::free(void* block)
{
    if (block == begin()) {
        release(this);
    } else if (std::less<>()(block, static_cast<void*>(firstEntry_)) ||
               !std::less<>()(block, static_cast<void*>(end_))) {
        ACE_New_Allocator::free(block);
    } else if (--entriesInUse_ == 0) {
        nextEntry_ = firstEntry_;
    }
}

}  // namespace

ACE_Allocator* obtainTagIndexMemory(std::size_t buckets)
{
    const std::size_t entries = kTagIndexPooling ? buckets : 0;
    void* block = nullptr;
    if (kTagIndexPooling && buckets == CTLVRecordV3::MIN_BUCKETS) {
        block = pool.pop();
    }
    if (block == nullptr) {
        block = ::operator new(TagIndexMemory::sizeFor(buckets, entries));
    }
    return new (block) TagIndexMemory(buckets, entries);
}

}  // namespace talvik
