#include "backend/protocol.h"

#include <string>

namespace talvik::backend {

namespace {

std::size_t wireSize(const Package& package)
{
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
    const auto consumed = package.decode(wire.data(), static_cast<unsigned>(wire.size()));
    if (consumed == Package::FAILED || consumed != wire.size() - kHeaderSize) {
        throw ProtocolError("a package does not parse");
    }
}

}  // namespace talvik::backend
