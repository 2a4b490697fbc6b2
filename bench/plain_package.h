#pragma once

#include <cstdint>
#include <list>
#include <vector>

namespace talvik::bench {

/// The allocations and copies that a decoded package cannot do without, and nothing else: a block
/// for each cell, each value and each place in a list, each record with its list, and an index of
/// 32 buckets with an entry a cell, all from the heap. Value bytes are zeroed before they are
/// freed. What a codec without any trick would cost.
struct PlainCell {
    std::uint16_t tagWord;
    std::uint16_t length;
    unsigned char* value;
};

struct PlainEntry {
    int tag;
    std::list<PlainCell*>::iterator place;
    PlainEntry* next;
    PlainEntry* previous;
};

struct PlainRecord {
    std::uint64_t id;
    std::list<PlainCell*>* cells;
    PlainEntry* buckets;
};

using PlainPackage = std::vector<PlainRecord*>;

/// Reads `size` bytes of well-formed records.
PlainPackage decodePlain(const unsigned char* records, std::size_t size);

void destroyPlain(PlainPackage& package);

/// Header and records in one exact-size buffer made with array `new`: one pass for the size, one of
/// plain copies. `size` receives its length.
unsigned char* encodePlain(const PlainPackage& package, const unsigned char (&header)[28],
                           std::size_t& size);

}  // namespace talvik::bench
