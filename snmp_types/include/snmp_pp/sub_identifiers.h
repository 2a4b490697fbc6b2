#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace Snmp_pp {

/// The sub-identifiers of an OID. Those of usual length lie in the object itself: every binding has
/// a copy of its OID, and an allocation takes longer than the copy. An allocation failure leaves
/// the object as it was.
class SubIdentifiers {
public:
    // NOLINTNEXTLINE(modernize-use-equals-default): that one would clear the room in places
    SubIdentifiers() {}
    SubIdentifiers(const SubIdentifiers& other) { append(other.begin(), other.size_); }
    SubIdentifiers(SubIdentifiers&& other) noexcept { takeOver(other); }
    SubIdentifiers& operator=(const SubIdentifiers& other);
    SubIdentifiers& operator=(SubIdentifiers&& other) noexcept;
    ~SubIdentifiers() = default;

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    std::uint32_t* begin() { return heap_ ? heap_.get() : inline_; }
    const std::uint32_t* begin() const { return heap_ ? heap_.get() : inline_; }
    const std::uint32_t* end() const { return begin() + size_; }
    std::uint32_t& operator[](std::size_t at) { return begin()[at]; }
    std::uint32_t operator[](std::size_t at) const { return begin()[at]; }
    std::uint32_t& back() { return begin()[size_ - 1]; }

    /// `ids` may point into this object.
    void assign(const std::uint32_t* ids, std::size_t count);
    void append(const std::uint32_t* ids, std::size_t count);
    void append(std::uint32_t id) { append(&id, 1); }

    /// Keeps the first `count`, which are no more than there are.
    void truncate(std::size_t count) { size_ = count; }
    void clear() { size_ = 0; }

    /// One by one; a prefix is the lesser.
    friend bool operator==(const SubIdentifiers& a, const SubIdentifiers& b)
    {
        return a.size_ == b.size_ && std::memcmp(a.begin(), b.begin(), a.size_ * sizeof(a[0])) == 0;
    }
    friend bool operator<(const SubIdentifiers& a, const SubIdentifiers& b);

private:
    static constexpr std::size_t kInline = 24;  // an OID of the alarms' takes 16

    using Heap = std::unique_ptr<std::uint32_t[]>;

    void takeOver(SubIdentifiers& other) noexcept;

    Heap heap_;  ///< once they do not fit `inline_`; then kept
    std::size_t capacity_ = kInline;
    std::size_t size_ = 0;
    std::uint32_t inline_[kInline];  // the first `size_` while there is no `heap_`
};

}  // namespace Snmp_pp
