#include "snmp_pp/sub_identifiers.h"

#include <algorithm>
#include <utility>

namespace Snmp_pp {

SubIdentifiers& SubIdentifiers::operator=(const SubIdentifiers& other)
{
    if (this != &other) {
        assign(other.begin(), other.size_);
    }
    return *this;
}

SubIdentifiers& SubIdentifiers::operator=(SubIdentifiers&& other) noexcept
{
    if (this != &other) {
        takeOver(other);
    }
    return *this;
}

void SubIdentifiers::assign(const std::uint32_t* ids, std::size_t count)
{
    if (count > capacity_) {
        Heap heap(new std::uint32_t[count]);
        std::copy_n(ids, count, heap.get());
        heap_ = std::move(heap);
        capacity_ = count;
    } else if (count != 0) {
        std::memmove(begin(), ids, count * sizeof *ids);
    }
    size_ = count;
}

void SubIdentifiers::append(const std::uint32_t* ids, std::size_t count)
{
    const auto size = size_ + count;
    if (size > capacity_) {
        const auto capacity = std::max(size, 2 * capacity_);
        Heap heap(new std::uint32_t[capacity]);
        std::copy_n(begin(), size_, heap.get());
        std::copy_n(ids, count, heap.get() + size_);
        heap_ = std::move(heap);
        capacity_ = capacity;
    } else {
        std::copy_n(ids, count, begin() + size_);
    }
    size_ = size;
}

bool operator<(const SubIdentifiers& a, const SubIdentifiers& b)
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
}

/// Leaves `other` empty.
void SubIdentifiers::takeOver(SubIdentifiers& other) noexcept
{
    heap_ = std::move(other.heap_);
    capacity_ = std::exchange(other.capacity_, kInline);
    size_ = std::exchange(other.size_, 0);
    if (!heap_) {
        std::copy_n(other.inline_, size_, inline_);
    }
}

}  // namespace Snmp_pp
