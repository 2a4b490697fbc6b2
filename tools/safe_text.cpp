#include "tools/safe_text.h"

#include "host/platform/utf8_text.h"
#include "tools/display_width.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace talvik::ctl {

namespace {

constexpr const char* kCutMark = "\xE2\x80\xA6";  // one column wide

/// Controls, and what turns the direction of writing or shows nothing.
bool isUnsafe(std::uint32_t code)
{
    return isControlCharacter(code) || code == 0x061C || (code >= 0x200B && code <= 0x200F) ||
           (code >= 0x2028 && code <= 0x202E) || (code >= 0x2060 && code <= 0x206F) ||
           code == 0xFEFF;
}

void appendEscaped(std::string& out, const std::string& text, std::size_t at, std::size_t bytes)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    for (std::size_t i = at; i < at + bytes; ++i) {
        out += "\\x";
        const auto byte = static_cast<unsigned char>(text[i]);
        out += kDigits[byte >> 4U];
        out += kDigits[byte & 0xFU];
    }
}

}  // namespace

std::string printable(const std::string& text)
{
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const auto character = utf8CharacterAt(text, at);
        const auto bytes = std::max<std::size_t>(character.length, 1);
        if (character.length == 0 || isUnsafe(character.code)) {
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
        const auto bytes = utf8CharacterAt(text, at).length;
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
    std::size_t length = 0;
    for (std::size_t at = 0; at < text.size();) {
        const auto character = utf8CharacterAt(text, at);
        length += character.length == 0 ? 1 : displayWidth(character.code);
        at += std::max<std::size_t>(character.length, 1);
    }
    return length;
}

std::string cutToWidth(const std::string& text, std::size_t width)
{
    if (shownLength(text) <= width) {
        return text;
    }
    std::size_t length = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        const auto character = utf8CharacterAt(text, at);
        length += character.length == 0 ? 1 : displayWidth(character.code);
        if (length >= width) {  // the mark takes the last column
            break;
        }
        at += std::max<std::size_t>(character.length, 1);
    }
    return width == 0 ? std::string() : text.substr(0, at) + kCutMark;
}

}  // namespace talvik::ctl
