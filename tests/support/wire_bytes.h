#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace talvik::test {

/// Builds what travels between agent and back end byte by byte, without the codec under test.
/// Fields are appended in call order, little-endian.
class WireBytes {
public:
    /// A package header with the words of a new package and `dataLen`.
    static WireBytes header(std::uint32_t dataLen) { return header(0x55555555, 3, dataLen); }

    static WireBytes header(std::uint32_t magic, std::uint32_t version, std::uint32_t dataLen)
    {
        return WireBytes()
            .u32(magic)
            .u32(version)
            .u32(0)
            .u32(0xFFFFFFFF)
            .u16(0xFFFD)
            .u16(1)
            .u16(0xFFFF)
            .u16(0xFFFF)
            .u32(dataLen);
    }

    /// A header that announces `records`, and them.
    static WireBytes package(const WireBytes& records)
    {
        return header(static_cast<std::uint32_t>(records.size())).append(records);
    }

    /// A record that announces the size of `cells`, and them.
    static WireBytes record(std::uint64_t id, const WireBytes& cells)
    {
        return WireBytes().u64(id).u16(static_cast<std::uint16_t>(cells.size())).append(cells);
    }

    WireBytes& u8(std::uint8_t value) { return little(value, 1); }
    WireBytes& u16(std::uint16_t value) { return little(value, 2); }
    WireBytes& u32(std::uint32_t value) { return little(value, 4); }
    WireBytes& u64(std::uint64_t value) { return little(value, 8); }

    WireBytes& text(std::string_view value)
    {
        bytes_.insert(bytes_.end(), value.begin(), value.end());
        return *this;
    }

    WireBytes& fill(std::size_t count, std::uint8_t value = 0)
    {
        bytes_.insert(bytes_.end(), count, value);
        return *this;
    }

    WireBytes& append(const WireBytes& other)
    {
        bytes_.insert(bytes_.end(), other.bytes_.begin(), other.bytes_.end());
        return *this;
    }

    /// The header of a cell: tag word and length field.
    WireBytes& cellHead(unsigned type, unsigned tag, std::uint16_t length)
    {
        return u16(static_cast<std::uint16_t>(tag << 4U | type)).u16(length);
    }

    WireBytes& cell(unsigned type, unsigned tag, std::string_view value)
    {
        return cellHead(type, tag, static_cast<std::uint16_t>(value.size())).text(value);
    }

    /// Replaces what is at `position`, growing with zeros where needed.
    WireBytes& overwrite(std::size_t position, const WireBytes& other)
    {
        bytes_.resize(std::max(bytes_.size(), position + other.size()));
        std::copy(other.bytes_.begin(), other.bytes_.end(),
                  bytes_.begin() + static_cast<std::ptrdiff_t>(position));
        return *this;
    }

    /// Fills up with one zeroed cell to `size` bytes in all.
    WireBytes& cellUpTo(std::size_t size)
    {
        const std::size_t length = size - bytes_.size() - 4;
        return cellHead(1, 1, static_cast<std::uint16_t>(length)).fill(length);
    }

    WireBytes& truncateTo(std::size_t size)
    {
        bytes_.resize(size);
        return *this;
    }

    std::size_t size() const { return bytes_.size(); }
    const std::vector<std::uint8_t>& bytes() const { return bytes_; }

    /// A copy that ends where its allocation ends, so that a sanitizer sees each byte read beyond.
    std::unique_ptr<std::uint8_t[]> exactCopy() const
    {
        std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[bytes_.size()]);
        std::copy(bytes_.begin(), bytes_.end(), copy.get());
        return copy;
    }

private:
    WireBytes& little(std::uint64_t value, unsigned width)
    {
        for (unsigned i = 0; i < width; ++i) {
            bytes_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
        return *this;
    }

    std::vector<std::uint8_t> bytes_;
};

}  // namespace talvik::test
