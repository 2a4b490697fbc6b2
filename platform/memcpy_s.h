#pragma once

#include <cstddef>

/// Bounds-checked copy with the interface of C11 Annex K (K.3.7.1.1).
///
/// Copies `count` bytes from `src` to `dest`, which has room for `destSize`. Returns 0 on success
/// and a non-zero error code when a pointer is null or `count` exceeds `destSize`; nothing outside
/// `dest[0, destSize)` is written either way. Callable from any thread.
extern "C" int memcpy_s(void* dest, std::size_t destSize, const void* src, std::size_t count);
