#include "host/platform/utf8_text.h"

#include <cstdint>

namespace talvik {

namespace {

/// The form of a character by its first octet: how many octets follow, and the least character that
/// may be written so.
struct Form {
    unsigned following;
    std::uint32_t payload;  ///< what the first octet contributes
    std::uint32_t least;
};

bool formOf(unsigned char first, Form& form)
{
    if (first < 0x80U) {
        form = {0, first, 0};
    } else if ((first & 0xE0U) == 0xC0U) {
        form = {1, first & 0x1FU, 0x80U};
    } else if ((first & 0xF0U) == 0xE0U) {
        form = {2, first & 0x0FU, 0x800U};
    } else if ((first & 0xF8U) == 0xF0U) {
        form = {3, first & 0x07U, 0x10000U};
    } else {
        return false;
    }
    return true;
}

bool isPlainCharacter(std::uint32_t c)
{
    const bool isControl = c < 0x20U || (c >= 0x7FU && c <= 0x9FU);
    const bool isSurrogate = c >= 0xD800U && c <= 0xDFFFU;
    return !isControl && !isSurrogate && c <= 0x10FFFFU;
}

}  // namespace

bool isPlainUtf8(const std::string& text)
{
    for (std::size_t at = 0; at < text.size();) {
        Form form{};
        if (!formOf(static_cast<unsigned char>(text[at++]), form) ||
            text.size() - at < form.following) {
            return false;
        }
        auto character = form.payload;
        for (unsigned i = 0; i < form.following; ++i) {
            const auto octet = static_cast<unsigned char>(text[at++]);
            if ((octet & 0xC0U) != 0x80U) {
                return false;
            }
            character = character << 6U | (octet & 0x3FU);
        }
        if (character < form.least || !isPlainCharacter(character)) {
            return false;
        }
    }
    return true;
}

}  // namespace talvik
