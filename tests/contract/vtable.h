#pragma once

#include <cstddef>
#include <string>

namespace talvik::contract {

/// Position of a virtual operation in its class's table, counted from 0, read from the bytes of a
/// member pointer as the Itanium C++ ABI lays it out. Throws std::invalid_argument when it points
/// to no virtual operation.
std::size_t slotOfMemberPointer(const void* bytes, std::size_t size);

/// As above. Qualified throughout: argument-dependent look-up would want types that a header only
/// names.
template <auto Operation>
std::size_t slotOf()
{
    const auto operation = Operation;
    return talvik::contract::slotOfMemberPointer(&operation, sizeof operation);
}

/// The entry at `slot` of the table that `object` points to.
void* virtualEntry(const void* object, std::size_t slot);

/// The file of the image that holds `address`.
std::string imageOf(const void* address);

/// The operation at `slot` of `object`, to be called as a free function whose first argument is the
/// object: how code that was compiled elsewhere, and knows nothing but the slot, calls it.
template <typename Result, typename... Arguments>
auto operationAt(const void* object, std::size_t slot)
{
    return reinterpret_cast<Result (*)(const void*, Arguments...)>(virtualEntry(object, slot));
}

}  // namespace talvik::contract
