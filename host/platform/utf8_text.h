#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace talvik {

/// One character of a text, and how many octets it takes; none when these are no UTF-8.
struct Utf8Character {
    std::uint32_t code = 0;
    std::size_t length = 0;
};

/// The character that begins at `at`, which lies within `text`. Overlong forms, surrogates and
/// codes above U+10FFFF are none (RFC 3629).
Utf8Character utf8CharacterAt(std::string_view text, std::size_t at);

/// True for U+0000 to U+001F and U+007F to U+009F.
bool isControlCharacter(std::uint32_t code);

/// True if `text` is valid UTF-8 without control characters, a NUL among them.
bool isPlainUtf8(const std::string& text);

}  // namespace talvik
