#pragma once

#include <cstddef>

class ACE_Allocator;

namespace talvik {

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
