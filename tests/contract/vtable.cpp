#include "tests/contract/vtable.h"

#include <dlfcn.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace talvik::contract {

namespace {

/// A pointer to a member function: for a virtual one a byte offset into the table, marked as such
/// in the lowest bit of the first word, or of the second where code addresses may be odd.
struct MemberPointer {
    std::uintptr_t word;
    std::ptrdiff_t adjustment;
};

#if defined(__aarch64__) || defined(__arm__)
bool isVirtual(const MemberPointer& pointer)
{
    return (pointer.adjustment & 1) != 0;
}

std::uintptr_t tableOffset(const MemberPointer& pointer)
{
    return pointer.word;
}
#else
bool isVirtual(const MemberPointer& pointer)
{
    return (pointer.word & 1U) != 0;
}

std::uintptr_t tableOffset(const MemberPointer& pointer)
{
    return pointer.word - 1;
}
#endif

}  // namespace

std::size_t slotOfMemberPointer(const void* bytes, std::size_t size)
{
    MemberPointer pointer{};
    if (size != sizeof pointer) {
        throw std::invalid_argument(
            "a member pointer of this compiler is not laid out as expected");
    }
    std::memcpy(&pointer, bytes, size);
    if (!isVirtual(pointer)) {
        throw std::invalid_argument("the operation is not virtual");
    }
    return tableOffset(pointer) / sizeof(void*);
}

void* virtualEntry(const void* object, std::size_t slot)
{
    void* const* table = nullptr;
    std::memcpy(&table, object, sizeof table);
    return table[slot];
}

std::string imageOf(const void* address)
{
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    return info.dli_fname;
}

}  // namespace talvik::contract
