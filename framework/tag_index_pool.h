#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define TALVIK_TAG_INDEX_POOLING false
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TALVIK_TAG_INDEX_POOLING false
#endif
#endif
#ifndef TALVIK_TAG_INDEX_POOLING
#define TALVIK_TAG_INDEX_POOLING true
#endif

class ACE_Allocator;

namespace talvik {

/// Off with the address sanitizer: table and entries then come from the heap one by one, so that it
/// sees each use after a free.
inline constexpr bool kTagIndexPooling = TALVIK_TAG_INDEX_POOLING;

/// So many tag indexes of ordinary size live in memory of the image itself (about half a megabyte,
/// of which only pages once used count); it goes when the image is unloaded. Further ones, and
/// larger ones, come from the heap.
inline constexpr std::size_t kPooledTagIndexes = 256;

/// Memory for the index of one record: its table of `buckets` and as many entries; further entries
/// come from the heap. It is in use from the moment the table is asked for until the table is
/// freed, by one thread at a time like the record itself; any thread may free it. Taking it and
/// giving it back never wait for another thread. Throws std::bad_alloc.
ACE_Allocator* obtainTagIndexMemory(std::size_t buckets);

}  // namespace talvik
