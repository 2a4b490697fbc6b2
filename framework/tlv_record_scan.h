#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

namespace talvik {

inline constexpr std::uint32_t kRecordHeaderSize = 10;  ///< record identifier and length field
inline constexpr std::uint32_t kCellHeaderSize = 4;     ///< tag word and length field

/// A multi-byte field of the wire: little-endian like the machine, at any address.
template <typename T>
T loadField(const unsigned char* bytes)
{
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// The header of one cell and where its value is, read at `position` of a record.
struct WireCell {
    std::uint16_t tagWord = 0;
    std::uint16_t dataLen = 0;
    std::uint16_t lengthAt = 0;  ///< position of the length field
    std::uint16_t valueAt = 0;   ///< position of the value; below the cell's own once it wrapped
    std::uint16_t next = 0;      ///< position behind the value
};

/// Reads the cell at `position` without any check; positions wrap at 65536.
inline WireCell readCell(const unsigned char* record, std::uint16_t position)
{
    const auto lengthAt = static_cast<std::uint16_t>(position + sizeof(std::uint16_t));
    const auto valueAt = static_cast<std::uint16_t>(position + kCellHeaderSize);
    const auto dataLen = loadField<std::uint16_t>(record + lengthAt);
    return {loadField<std::uint16_t>(record + position), dataLen, lengthAt, valueAt,
            static_cast<std::uint16_t>(valueAt + dataLen)};
}

/// Bytes that the record takes by its length field.
inline std::uint32_t recordSize(const unsigned char* record)
{
    return loadField<std::uint16_t>(record + sizeof(std::uint64_t)) + kRecordHeaderSize;
}

/// Decides whether a record is accepted, logging why not; allocates nothing. `available` is the
/// number of bytes from `record` on. Returns the number of cells that the record is made of, the
/// first ones as they stand, or nothing for a refused record.
std::optional<std::size_t> scanRecord(const unsigned char* record, std::uint32_t available);

}  // namespace talvik
