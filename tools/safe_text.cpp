#include "tools/safe_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace talvik::ctl {

namespace {

struct Character {
    std::uint32_t code = 0;
    std::size_t bytes = 0;  ///< 0 when the bytes are no UTF-8
};

unsigned char byteAt(const std::string& text, std::size_t at)
{
    return static_cast<unsigned char>(text[at]);
}

/// The character that begins at `at`; overlong forms and surrogates are none (RFC 3629).
Character characterAt(const std::string& text, std::size_t at)
{
    const auto first = byteAt(text, at);
    if (first < 0x80) {
        return {first, 1};
    }
    const std::size_t bytes = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() - at < bytes) {
        return {};
    }
    std::uint32_t code = first & (0x7FU >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        const auto next = byteAt(text, at + i);
        if ((next & 0xC0U) != 0x80) {
            return {};
        }
        code = code << 6U | (next & 0x3FU);
    }
    const bool overlong = (bytes == 3 && code < 0x800) || (bytes == 4 && code < 0x10000);
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return overlong || surrogate || code > 0x10FFFF ? Character{} : Character{code, bytes};
}

bool isControl(std::uint32_t code)
{
    return code < 0x20 || (code >= 0x7F && code <= 0x9F) || code == 0x061C ||
           (code >= 0x200B && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF;
}

void appendEscaped(std::string& out, const std::string& text, std::size_t at, std::size_t bytes)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    for (std::size_t i = at; i < at + bytes; ++i) {
        out += "\\x";
        out += kDigits[byteAt(text, i) >> 4U];
        out += kDigits[byteAt(text, i) & 0xFU];
    }
}

}  // namespace

std::string printable(const std::string& text)
{
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const auto character = characterAt(text, at);
        const auto bytes = std::max<std::size_t>(character.bytes, 1);
        if (character.bytes == 0 || isControl(character.code)) {
            appendEscaped(out, text, at, bytes);
        } else if (character.code == '\\') {
            out += "\\\\";
        } else {
            out.append(text, at, bytes);
        }
        at += bytes;
    }
    return out;
}

std::string validUtf8(const std::string& text)
{
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const auto bytes = characterAt(text, at).bytes;
        if (bytes == 0) {
            appendEscaped(out, text, at, 1);
        } else {
            out.append(text, at, bytes);
        }
        at += std::max<std::size_t>(bytes, 1);
    }
    return out;
}

std::size_t shownLength(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
    }));
}

}  // namespace talvik::ctl
