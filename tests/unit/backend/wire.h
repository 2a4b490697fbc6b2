#pragma once

#include "backend/protocol.h"

#include <cstdint>
#include <initializer_list>
#include <string>

namespace talvik::test {

/// Packages written byte by byte, without the code under test.
class Wire {
public:
    /// A header: the words that matter to the protocol, the others as in a new package.
    static Wire header(std::uint16_t kind, std::uint32_t exchange, std::uint32_t word3,
                       std::uint32_t dataLen)
    {
        Wire wire;
        wire.u32(0x55555555).u32(3).u32(exchange).u32(word3);
        return wire.u16(0xFFFD).u16(kind).u16(0xFFFF).u16(0xFFFF).u32(dataLen);
    }

    /// A request: one record without cells.
    static Wire request(std::uint32_t exchange, std::uint64_t command)
    {
        return header(1, exchange, 0xFFFFFFFF, 10).u64(command).u16(0);
    }

    /// A reply: one record with one text cell of tag 1.
    static Wire reply(std::uint32_t exchange, std::uint64_t command, const std::string& text)
    {
        const auto length = static_cast<std::uint16_t>(text.size() + 1);
        auto wire = header(2, exchange, 0, 14U + length).u64(command);
        return wire.u16(static_cast<std::uint16_t>(length + 4U)).u16(0x12).u16(length).text(text);
    }

    /// A reply that refuses: no records.
    static Wire refusal(std::uint32_t exchange, std::uint32_t code)
    {
        return header(2, exchange, code, 0);
    }

    /// A package of any kind.
    static Wire package(std::uint16_t kind, std::uint32_t exchange, std::uint32_t word3,
                        const Wire& records)
    {
        const auto length = static_cast<std::uint32_t>(records.bytes().size());
        return header(kind, exchange, word3, length).append(records);
    }

    /// An acknowledgement.
    static Wire acknowledgement(std::uint32_t number) { return header(4, number, 0xFFFFFFFF, 0); }

    /// A record with these cells.
    static Wire record(std::uint64_t id, const Wire& cells)
    {
        const auto length = static_cast<std::uint16_t>(cells.bytes().size());
        return Wire().u64(id).u16(length).append(cells);
    }

    /// A cell with an unsigned number of `width` bytes.
    Wire& numberCell(unsigned tag, std::uint64_t value, int width)
    {
        u16(static_cast<std::uint16_t>(tag << 4U | 3U)).u16(static_cast<std::uint16_t>(width));
        return number(value, width);
    }

    /// A cell with the characters and a NUL.
    Wire& textCell(unsigned tag, const std::string& value)
    {
        u16(static_cast<std::uint16_t>(tag << 4U | 2U));
        return u16(static_cast<std::uint16_t>(value.size() + 1)).text(value);
    }

    Wire& u8(std::uint8_t value) { return number(value, 1); }
    Wire& u16(std::uint16_t value) { return number(value, 2); }
    Wire& u32(std::uint32_t value) { return number(value, 4); }
    Wire& u64(std::uint64_t value) { return number(value, 8); }

    /// The characters and a NUL.
    Wire& text(const std::string& value)
    {
        bytes_.insert(bytes_.end(), value.begin(), value.end());
        bytes_.push_back(0);
        return *this;
    }

    Wire& append(const Wire& other)
    {
        bytes_.insert(bytes_.end(), other.bytes_.begin(), other.bytes_.end());
        return *this;
    }

    Wire& truncate(std::size_t size)
    {
        bytes_.resize(size);
        return *this;
    }

    const backend::Bytes& bytes() const { return bytes_; }
    std::string octets() const { return {bytes_.begin(), bytes_.end()}; }

private:
    Wire& number(std::uint64_t value, int width)
    {
        for (int byte = 0; byte < width; ++byte) {
            bytes_.push_back(static_cast<unsigned char>(value >> (8 * byte)));
        }
        return *this;
    }

    backend::Bytes bytes_;
};

}  // namespace talvik::test
