#include "tools/hex_dump.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <vector>

namespace talvik::ctl {

namespace {

constexpr std::size_t kLeastDigits = 4;  // of an offset
constexpr std::size_t kLeastBeforeWords = 6;
constexpr std::size_t kByteDigits = 2;
constexpr std::size_t kHalfLine = 8;    // bytes in front of a wider gap
constexpr std::size_t kCharacters = 3;  // blanks that are no gap between bytes, at least
constexpr const char* kMagic = "5555";  // every package begins with it

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

std::size_t skipBlanks(const std::string& line, std::size_t at)
{
    while (at < line.size() && isBlank(line[at])) {
        ++at;
    }
    return at;
}

std::size_t skipWord(const std::string& line, std::size_t at)
{
    while (at < line.size() && !isBlank(line[at])) {
        ++at;
    }
    return at;
}

/// How long each word is from the offset to `end`.
std::vector<std::size_t> wordsBehind(const std::string& line, const LeadingDigits& offset,
                                     std::size_t end)
{
    std::vector<std::size_t> lengths;
    for (auto at = skipBlanks(line, offset.end); at < end;) {
        const auto wordEnd = skipWord(line, at);
        lengths.push_back(wordEnd - at);
        at = skipBlanks(line, wordEnd);
    }
    return lengths;
}

/// Whether a word of two digits begins at `at`.
bool isByteAt(const std::string& line, std::size_t at)
{
    const auto end = skipWord(line, at);
    return end - at == kByteDigits &&
           std::all_of(line.begin() + static_cast<std::ptrdiff_t>(at),
                       line.begin() + static_cast<std::ptrdiff_t>(end),
                       [](unsigned char c) { return std::isxdigit(c) != 0; });
}

/// Where up to eight bytes end that begin at `at`, one blank apart.
std::size_t endOfSecondHalf(const std::string& line, std::size_t at)
{
    auto end = at;
    for (std::size_t words = 0; words < kHalfLine && isByteAt(line, at); ++words) {
        end = skipWord(line, at);
        at = skipBlanks(line, end);
        if (at - end != 1) {
            break;
        }
    }
    return end;
}

bool isZero(const std::string& digits)
{
    return digits.find_first_not_of('0') == std::string::npos;
}

/// Whether the second line goes on where the first one ends, by what is in front of both.
bool goesOn(const LeadingDigits& first, std::size_t bytes, const std::string& second)
{
    const auto next = leadingDigits(second);
    DumpOffsets offsets;
    const bool begins = next && !next->colon && offsets.follow(first.digits);
    offsets.advance(bytes);
    return begins && offsets.follow(next->digits);
}

}  // namespace

std::optional<LeadingDigits> leadingDigits(const std::string& line)
{
    auto at = skipBlanks(line, 0);
    const bool prefix = line.compare(at, 2, "0x") == 0;
    at += prefix ? 2 : 0;
    auto end = at;
    while (end < line.size() && std::isxdigit(static_cast<unsigned char>(line[end])) != 0) {
        ++end;
    }
    LeadingDigits lead{line.substr(at, end - at), end};
    if (end < line.size() && line[end] == ':') {
        lead.colon = true;
        ++lead.end;
    }
    const bool ends = lead.end == line.size() || isBlank(line[lead.end]);
    const bool isLead = lead.digits.size() >= kLeastDigits && ends && (lead.colon || !prefix);
    return isLead ? std::make_optional(lead) : std::nullopt;
}

EndOfBytes endOfBytes(const std::string& line, const LeadingDigits& offset)
{
    const auto start = skipBlanks(line, offset.end);
    if (offset.colon) {
        return {std::min(line.find("  ", start), line.size())};
    }
    std::size_t middle = 0;  // the gap behind the first eight
    auto at = start;
    for (std::size_t words = 1; at < line.size(); ++words) {
        const auto end = skipWord(line, at);
        at = skipBlanks(line, end);
        const auto gap = at - end;
        if (at == line.size() || line[at] == '|' || line[at] == '>') {
            return {end, 0, middle};
        }
        if (gap >= kCharacters || (gap == 2 && words != kHalfLine)) {
            const bool perhapsMiddle = words == kHalfLine && isByteAt(line, at);
            return perhapsMiddle ? EndOfBytes{end, endOfSecondHalf(line, at), gap}
                                 : EndOfBytes{end, 0, middle};
        }
        middle = words == kHalfLine ? gap : middle;
    }
    return {line.size(), 0, middle};
}

std::size_t wordsUpTo(const std::string& line, const LeadingDigits& offset, std::size_t end)
{
    return wordsBehind(line, offset, end).size();
}

bool DumpOffsets::follow(const std::string& digits)
{
    const bool begins = first_ || (mayRestart_ && isZero(digits));
    first_ = false;
    mayRestart_ = false;
    bool follows = false;
    for (auto& reading : readings_) {
        std::uint64_t offset = 0;
        const auto* end = digits.data() + digits.size();
        const auto read = std::from_chars(digits.data(), end, offset, reading.base);
        reading.possible = reading.possible && read.ec == std::errc() && read.ptr == end &&
                           (begins || offset == reading.next);
        reading.next = offset;
        follows = follows || reading.possible;
    }
    return follows;
}

void DumpOffsets::advance(std::size_t bytes)
{
    for (auto& reading : readings_) {
        reading.next += bytes;
    }
}

std::set<std::uint64_t> DumpOffsets::leftOut(const std::string& digits, std::size_t bytes,
                                             bool ends) const
{
    std::set<std::uint64_t> gaps;
    for (const auto& reading : readings_) {
        std::uint64_t offset = 0;
        const auto* end = digits.data() + digits.size();
        const auto read = std::from_chars(digits.data(), end, offset, reading.base);
        const bool possible = reading.possible && read.ec == std::errc() && read.ptr == end;
        if (possible && bytes != 0 && offset > reading.next &&
            (ends || (offset - reading.next) % bytes == 0)) {
            gaps.insert(offset - reading.next);
        }
    }
    return gaps;
}

DumpLayout layoutOf(const std::string& first, const std::string& second)
{
    const auto lead = leadingDigits(first);
    if (!lead) {
        return DumpLayout::Bytes;
    }
    if (lead->colon) {
        return DumpLayout::Offsets;
    }
    const auto end = endOfBytes(first, *lead);
    const auto words = wordsBehind(first, *lead, end.at);
    if (words.empty()) {  // what od makes of nothing, or plain bytes
        return isZero(lead->digits) && second.empty() ? DumpLayout::Offsets : DumpLayout::Bytes;
    }
    const bool alike = std::equal(words.begin() + 1, words.end(), words.begin());
    if (alike && words.front() == kByteDigits) {
        if (isZero(lead->digits) || goesOn(*lead, words.size(), second) ||
            goesOn(*lead, wordsUpTo(first, *lead, end.longer), second)) {
            return DumpLayout::Offsets;
        }
        return lead->digits.compare(0, kLeastDigits, kMagic) == 0 ? DumpLayout::Bytes
                                                                  : DumpLayout::Doubtful;
    }
    const bool wide = alike && words.front() > kByteDigits && words.front() != lead->digits.size();
    return wide && lead->digits.size() >= kLeastBeforeWords && isZero(lead->digits)
               ? DumpLayout::Words
               : DumpLayout::Bytes;
}

}  // namespace talvik::ctl
