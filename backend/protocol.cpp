#include "backend/protocol.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace talvik::backend {

namespace {

void checkRecordCount(std::size_t count)
{
    if (count > kMaxRecords) {
        throw ProtocolError("a package with more than " + std::to_string(kMaxRecords) + " records");
    }
}

/// How many records `wire` claims to have: looks at nothing but their lengths.
std::size_t claimedRecords(const Bytes& wire)
{
    constexpr std::size_t kLengthOffset = 8;
    std::size_t count = 0;
    for (std::size_t at = kHeaderSize; wire.size() - at >= Package::MIN_RECORD_SIZE; ++count) {
        std::uint16_t length = 0;
        std::memcpy(&length, wire.data() + at + kLengthOffset, sizeof length);
        at += std::min<std::size_t>(Package::MIN_RECORD_SIZE + length, wire.size() - at);
    }
    return count;
}

std::size_t wireSize(const Package& package)
{
    checkRecordCount(package.oRecords.size());
    std::size_t size = kHeaderSize;
    for (const CTLVRecordV3* record : package.oRecords) {
        const auto length = record->length();
        if (length > kMaxRecordLength) {
            throw ProtocolError("a record holds " + std::to_string(length) +
                                " bytes of cells, at most " + std::to_string(kMaxRecordLength) +
                                " are possible");
        }
        size += length + Package::MIN_RECORD_SIZE;
    }
    if (size > kMaxPackageSize) {
        throw ProtocolError("a package takes " + std::to_string(size) + " bytes, at most " +
                            std::to_string(kMaxPackageSize) + " are possible");
    }
    return size;
}

}  // namespace

Bytes encoded(Package& package)
{
    Bytes wire(wireSize(package));
    if (package.encode(wire.data(), static_cast<unsigned>(wire.size())) != wire.size()) {
        throw ProtocolError("a package cannot be encoded");
    }
    return wire;
}

void decodeInto(Package& package, Bytes& wire)
{
    if (wire.size() < kHeaderSize) {
        throw ProtocolError("a package shorter than its header");
    }
    checkRecordCount(claimedRecords(wire));
    const auto consumed = package.decode(wire.data(), static_cast<unsigned>(wire.size()));
    if (consumed == Package::FAILED || consumed != wire.size() - kHeaderSize) {
        throw ProtocolError("a package does not parse");
    }
}

}  // namespace talvik::backend
