#include "snmp_pp/octet.h"

#include "ber_length.h"

#include <algorithm>
#include <cstddef>

namespace Snmp_pp {

namespace {

constexpr std::size_t kBytesPerLine = 16;

bool isPrintable(unsigned char byte)
{
    // Not isprint(): the result must not depend on the process's locale.
    return static_cast<unsigned char>(byte - 0x20) <= 0x7E - 0x20;
}

/// 0 for a byte of a text, without a branch.
unsigned char strangeness(char byte)
{
    const auto code = static_cast<unsigned char>(byte);
    return static_cast<unsigned char>(!isPrintable(code) & (byte != '\n'));
}

bool isText(const std::string& bytes)
{
    constexpr std::size_t kBlock = 16;  // which compilers turn into a few steps
    const char* at = bytes.data();
    const char* const end = at + bytes.size();
    unsigned char strange = 0;
    for (; static_cast<std::size_t>(end - at) >= kBlock; at += kBlock) {
        for (std::size_t i = 0; i < kBlock; ++i) {
            strange |= strangeness(at[i]);
        }
    }
    for (; at != end; ++at) {
        strange |= strangeness(*at);
    }
    return strange == 0;
}

void appendDumpLine(std::string& dump, const std::string& bytes, std::size_t begin)
{
    constexpr char kDigits[] = "0123456789ABCDEF";

    const std::size_t count = std::min(kBytesPerLine, bytes.size() - begin);
    std::string text;
    dump += "  ";
    for (std::size_t i = 0; i < count; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[begin + i]);
        dump += kDigits[byte >> 4];
        dump += kDigits[byte & 0x0F];
        dump += ' ';
        text += isPrintable(byte) ? static_cast<char>(byte) : '.';
    }
    dump.append((kBytesPerLine - count) * 3 + 3, ' ');
    dump += text;
    dump += '\n';
}

std::string hexDump(const std::string& bytes)
{
    std::string dump;
    for (std::size_t begin = 0; begin < bytes.size(); begin += kBytesPerLine) {
        appendDumpLine(dump, bytes, begin);
    }
    return dump;
}

}  // namespace

OctetStr::OctetStr(const char* text) : bytes_(text ? text : "") {}

OctetStr::OctetStr(const unsigned char* bytes, std::uint32_t length)
{
    set_data(bytes, length);
}

OctetStr& OctetStr::operator=(const char* text)
{
    bytes_ = text ? text : "";
    changed();
    return *this;
}

OctetStr& OctetStr::operator=(const OctetStr& other)
{
    if (this != &other) {
        bytes_ = other.bytes_;
        changed();
        valid_ = other.valid_;
    }
    return *this;
}

OctetStr& OctetStr::operator=(OctetStr&& other) noexcept
{
    if (this != &other) {
        bytes_ = std::move(other.bytes_);
        changed();
        valid_ = other.valid_;
        other.clear();
    }
    return *this;
}

SnmpSyntax& OctetStr::operator=(const SnmpSyntax& value)
{
    if (value.get_syntax() == sNMP_SYNTAX_OCTETS) {
        return *this = static_cast<const OctetStr&>(value);
    }
    clear();
    valid_ = false;
    return *this;
}

OctetStr& OctetStr::operator+=(const char* text)
{
    if (text) {
        bytes_ += text;
        changed();
    }
    return *this;
}

OctetStr& OctetStr::operator+=(unsigned char byte)
{
    bytes_ += static_cast<char>(byte);
    changed();
    return *this;
}

OctetStr& OctetStr::operator+=(const OctetStr& other)
{
    bytes_ += other.bytes_;
    changed();
    return *this;
}

unsigned char& OctetStr::operator[](unsigned int index)
{
    printable_.reset();
    if (index < bytes_.size()) {
        return reinterpret_cast<unsigned char&>(bytes_[index]);
    }
    return spare_ = 0;
}

unsigned char OctetStr::operator[](unsigned int index) const
{
    return index < bytes_.size() ? static_cast<unsigned char>(bytes_[index]) : 0;
}

const unsigned char* OctetStr::data() const
{
    return bytes_.empty() ? nullptr : reinterpret_cast<const unsigned char*>(bytes_.data());
}

void OctetStr::set_data(const unsigned char* bytes, std::uint32_t length)
{
    if (bytes) {
        bytes_.assign(reinterpret_cast<const char*>(bytes), length);
    } else {
        bytes_.clear();
    }
    changed();
}

const char* OctetStr::get_printable() const
{
    return isText(bytes_) ? bytes_.c_str() : printable_.get([this] { return hexDump(bytes_); });
}

int OctetStr::get_asn1_length() const
{
    return berElementLength(bytes_.size());
}

void OctetStr::clear()
{
    bytes_.clear();
    changed();
}

void OctetStr::changed()
{
    valid_ = true;
    printable_.reset();
}

}  // namespace Snmp_pp
