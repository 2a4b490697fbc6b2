#include "tools/package_input.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace talvik::ctl {

namespace {

constexpr std::size_t kChunk = 65536;
constexpr std::size_t kLeastOffset = 4;  // digits of an offset before a colon, at least
constexpr std::size_t kDumpOffset = 8;   // digits of an offset before two blanks, always

bool isDigit(char c)
{
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

unsigned valueOf(char digit)
{
    if (digit >= '0' && digit <= '9') {
        return static_cast<unsigned>(digit - '0');
    }
    constexpr unsigned kTen = 10;
    return static_cast<unsigned>(std::tolower(static_cast<unsigned char>(digit)) - 'a') + kTen;
}

std::size_t digitsAtStart(const std::string& line)
{
    return static_cast<std::size_t>(std::find_if_not(line.begin(), line.end(), isDigit) -
                                    line.begin());
}

/// The part of `line` that holds bytes: without an offset and the characters behind them.
std::pair<std::size_t, std::size_t> bytesPart(const std::string& line)
{
    const auto digits = digitsAtStart(line);
    if (digits >= kLeastOffset && line.compare(digits, 2, ": ") == 0) {  // xxd
        return {digits + 1, std::min(line.find("  ", digits + 2), line.size())};
    }
    if (digits == kDumpOffset && line.compare(digits, 2, "  ") == 0) {  // hexdump -C
        return {digits, std::min(line.find('|'), line.size())};
    }
    return {0, line.size()};
}

bool isBetween(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == ',' || c == ':';
}

/// Appends the bytes of a line. Returns the column that cannot be read, from 1, or 0.
std::size_t appendLine(const std::string& line, std::vector<unsigned char>& bytes)
{
    constexpr unsigned kBits = 4;
    auto [at, end] = bytesPart(line);
    while (at < end) {
        if (isBetween(line[at])) {
            ++at;
        } else if (line[at] == '0' && at + 1 < end &&
                   (line[at + 1] == 'x' || line[at + 1] == 'X')) {
            at += 2;
        } else if (isDigit(line[at]) && at + 1 < end && isDigit(line[at + 1])) {
            bytes.push_back(
                static_cast<unsigned char>(valueOf(line[at]) << kBits | valueOf(line[at + 1])));
            at += 2;
        } else {
            return at + 1;
        }
    }
    return 0;
}

}  // namespace

std::string readCapture(std::istream& in)
{
    std::string content;
    std::string chunk(kChunk, '\0');
    while (in && content.size() <= kMaxCapture) {
        in.read(chunk.data(),
                static_cast<std::streamsize>(std::min(kChunk, kMaxCapture + 1 - content.size())));
        content.append(chunk, 0, static_cast<std::size_t>(in.gcount()));
    }
    return content;
}

bool looksLikeHex(const std::string& content)
{
    const bool isText = std::all_of(content.begin(), content.end(), [](unsigned char c) {
        return std::isprint(c) != 0 || std::isspace(c) != 0;
    });
    return isText && !content.empty() && content.compare(0, 4, "UUUU") != 0;
}

Capture bytesOfHex(const std::string& text)
{
    Capture capture;
    bool dumped = false;  // by hexdump -C, which ends with the size on a line of its own
    std::size_t number = 1;
    for (std::size_t at = 0; at < text.size(); ++number) {
        const auto end = std::min(text.find('\n', at), text.size());
        const auto line = text.substr(at, end - at);
        if (line == "*") {
            capture.refusal = "line " + std::to_string(number) +
                              ": the dump leaves lines out here; make it with hexdump -v -C";
            break;
        }
        const bool isEndOfDump =
            dumped && digitsAtStart(line) == kDumpOffset && line.size() == kDumpOffset;
        dumped = dumped || line.find('|') != std::string::npos;
        const auto column = isEndOfDump ? 0 : appendLine(line, capture.bytes);
        if (column != 0) {
            capture.refusal = "line " + std::to_string(number) + ", column " +
                              std::to_string(column) +
                              ": expected two hexadecimal digits for a byte";
            break;
        }
        at = end + 1;
    }
    return capture;
}

}  // namespace talvik::ctl
