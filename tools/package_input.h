#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

namespace talvik::ctl {

/// No capture may be larger, as bytes or as text.
constexpr std::size_t kMaxCapture = std::size_t{64} << 20U;

/// Bytes, and why what follows them cannot be read.
struct Capture {
    std::vector<unsigned char> bytes;
    std::string refusal;  ///< empty if all was read
    std::string advice;   ///< what to do then
};

/// Reads to the end of `in`, but not more than one byte above `kMaxCapture`.
std::string readCapture(std::istream& in);

/// Whether `content` is written in hexadecimal digits rather than in bytes: no package begins with
/// such a text.
bool looksLikeHex(const std::string& content);

/// The bytes that `text` stands for: pairs of hexadecimal digits with blanks, commas, colons and 0x
/// between as anybody likes, or what xxd, hexdump -C, od -t x1 and those make of it that show
/// packets of a network, with offsets and characters. A line with nothing but a star stands for
/// repetitions of the line before it, as the next offset tells. Offsets that do not count the bytes
/// are refused, as they may be bytes.
Capture bytesOfHex(const std::string& text);

}  // namespace talvik::ctl
