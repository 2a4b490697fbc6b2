#include "bench/plain_package.h"

#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

namespace talvik::bench {

namespace {

constexpr std::size_t kBuckets = 32;
constexpr std::size_t kRecordHeader = 10;
constexpr std::size_t kCellHeader = 4;
constexpr unsigned kTypeBits = 4;

PlainCell* makeCell(const unsigned char* bytes)
{
    auto* cell = new PlainCell;
    std::memcpy(&cell->tagWord, bytes, sizeof cell->tagWord);
    std::memcpy(&cell->length, bytes + 2, sizeof cell->length);
    cell->value = new unsigned char[cell->length];
    std::memcpy(cell->value, bytes + kCellHeader, cell->length);
    return cell;
}

PlainEntry* makeBuckets()
{
    auto* buckets = static_cast<PlainEntry*>(::operator new(kBuckets * sizeof(PlainEntry)));
    for (std::size_t i = 0; i < kBuckets; ++i) {
        new (&buckets[i]) PlainEntry{0, {}, &buckets[i], &buckets[i]};
    }
    return buckets;
}

void append(PlainRecord& record, PlainCell* cell)
{
    const auto place = record.cells->insert(record.cells->end(), cell);
    const int tag = cell->tagWord >> kTypeBits;
    PlainEntry& bucket = record.buckets[static_cast<std::size_t>(tag) % kBuckets];
    auto* entry = new PlainEntry{tag, place, bucket.next, &bucket};
    bucket.next->previous = entry;
    bucket.next = entry;
}

void destroyIndex(PlainRecord& record)
{
    for (std::size_t i = 0; i < kBuckets; ++i) {
        PlainEntry* entry = record.buckets[i].next;
        while (entry != &record.buckets[i]) {
            delete std::exchange(entry, entry->next);
        }
    }
    ::operator delete(record.buckets);
}

void destroyCell(PlainCell* cell)
{
    explicit_bzero(cell->value, cell->length);
    delete[] cell->value;
    delete cell;
}

unsigned char* putCell(unsigned char* out, const PlainCell& cell)
{
    std::memcpy(out, &cell.tagWord, sizeof cell.tagWord);
    std::memcpy(out + 2, &cell.length, sizeof cell.length);
    std::memcpy(out + kCellHeader, cell.value, cell.length);
    return out + kCellHeader + cell.length;
}

std::size_t sizeOf(const PlainRecord& record)
{
    std::size_t size = kRecordHeader;
    for (const PlainCell* cell : *record.cells) {
        size += kCellHeader + cell->length;
    }
    return size;
}

}  // namespace

PlainPackage decodePlain(const unsigned char* records, std::size_t size)
{
    PlainPackage package;
    for (const unsigned char* at = records; at != records + size;) {
        std::uint16_t length = 0;
        auto* record = new PlainRecord{0, new std::list<PlainCell*>, makeBuckets()};
        std::memcpy(&record->id, at, sizeof record->id);
        std::memcpy(&length, at + sizeof record->id, sizeof length);
        at += kRecordHeader;
        for (const unsigned char* end = at + length; at != end;) {
            PlainCell* cell = makeCell(at);
            append(*record, cell);
            at += kCellHeader + cell->length;
        }
        package.push_back(record);
    }
    return package;
}

void destroyPlain(PlainPackage& package)
{
    for (PlainRecord* record : package) {
        for (PlainCell* cell : *record->cells) {
            destroyCell(cell);
        }
        delete record->cells;
        destroyIndex(*record);
        delete record;
    }
    package.clear();
}

unsigned char* encodePlain(const PlainPackage& package, const unsigned char (&header)[28],
                           std::size_t& size)
{
    size = sizeof header;
    for (const PlainRecord* record : package) {
        size += sizeOf(*record);
    }
    auto* bytes = new unsigned char[size];
    std::memcpy(bytes, header, sizeof header);
    unsigned char* out = bytes + sizeof header;
    for (const PlainRecord* record : package) {
        unsigned char* start = out;
        std::memcpy(out, &record->id, sizeof record->id);
        out += kRecordHeader;
        for (const PlainCell* cell : *record->cells) {
            out = putCell(out, *cell);
        }
        const auto length = static_cast<std::uint16_t>(out - start - std::ptrdiff_t{kRecordHeader});
        std::memcpy(start + sizeof record->id, &length, sizeof length);
    }
    return bytes;
}

}  // namespace talvik::bench
