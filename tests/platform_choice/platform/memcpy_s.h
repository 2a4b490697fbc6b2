#pragma once

#include <cstddef>

// A vendor whose library has the function under another name.
extern "C" int vendor_checked_copy(const void* src, std::size_t count, void* dest,
                                   std::size_t destSize);

inline int memcpy_s(void* dest, std::size_t destSize, const void* src, std::size_t count)
{
    return vendor_checked_copy(src, count, dest, destSize);
}
