#pragma once

#include <cstddef>
#include <string>

namespace talvik::ctl {

/// `text` made safe for a terminal: control characters, characters that turn the writing direction
/// and bytes that are no UTF-8 become \xNN, a backslash becomes two.
std::string printable(const std::string& text);

/// `text` as valid UTF-8, for JSON: bytes that are none become the four characters \xNN.
std::string validUtf8(const std::string& text);

/// How many columns of a terminal a printable text takes.
std::size_t shownLength(const std::string& text);

/// `text` if it takes at most `width` columns, otherwise what fits of it and "…".
std::string cutToWidth(const std::string& text, std::size_t width);

}  // namespace talvik::ctl
