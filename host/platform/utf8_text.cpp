#include "host/platform/utf8_text.h"

namespace talvik {

namespace {

/// The least code that may take so many octets.
constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};

constexpr std::uint32_t kGreatest = 0x10FFFF;

unsigned char octetAt(std::string_view text, std::size_t at)
{
    return static_cast<unsigned char>(text[at]);
}

bool isSurrogate(std::uint32_t code)
{
    return code >= 0xD800 && code <= 0xDFFF;
}

}  // namespace

Utf8Character utf8CharacterAt(std::string_view text, std::size_t at)
{
    const auto first = octetAt(text, at);
    if (first < 0x80) {
        return {first, 1};
    }
    const std::size_t length = first >= 0xF0 ? 4 : (first >= 0xE0 ? 3 : 2);
    if (first < 0xC0 || first >= 0xF8 || text.size() - at < length) {
        return {};
    }
    std::uint32_t code = first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = octetAt(text, at + i);
        if ((next & 0xC0U) != 0x80) {
            return {};
        }
        code = code << 6U | (next & 0x3FU);
    }
    if (code < kLeast[length] || code > kGreatest || isSurrogate(code)) {
        return {};
    }
    return {code, length};
}

bool isControlCharacter(std::uint32_t code)
{
    return code < 0x20 || (code >= 0x7F && code <= 0x9F);
}

bool isPlainUtf8(const std::string& text)
{
    for (std::size_t at = 0; at < text.size();) {
        const auto character = utf8CharacterAt(text, at);
        if (character.length == 0 || isControlCharacter(character.code)) {
            return false;
        }
        at += character.length;
    }
    return true;
}

}  // namespace talvik
