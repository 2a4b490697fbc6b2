#include "tools/package_input.h"

#include "tools/hex_dump.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <utility>

namespace talvik::ctl {

namespace {

constexpr std::size_t kChunk = 65536;
constexpr const char* kGiveBytes =
    "give the bytes alone, two digits each, as od -An -v -t x1 writes them";
constexpr const char* kLeaveNothingOut = "make the dump with hexdump -v, od -v or xxd without -a";

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

bool isBetween(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == ',' || c == ':';
}

/// Appends the bytes that stand from `at` to `end`. Returns the column that cannot be read, from 1,
/// or 0.
std::size_t appendBytes(const std::string& line, std::size_t at, std::size_t end,
                        std::vector<unsigned char>& bytes)
{
    constexpr unsigned kBits = 4;
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

/// What stands for lines like the one before.
bool isStar(const std::string& line)
{
    return line == "*" || line == "*\r";
}

bool isBlankLine(const std::string& line)
{
    return line.find_first_not_of(" \t\r") == std::string::npos;
}

/// Reads a text line by line up to the first one that cannot be read.
class HexReader {
public:
    explicit HexReader(const std::string& text) : text_(text) {}

    Capture read()
    {
        layout_ = findLayout();
        while (at_ < text_.size() && capture_.refusal.empty()) {
            const auto line = lineAt(at_);
            ++number_;
            if (isStar(line) && repeated_ != 0) {
                star_ = number_;
            } else if (isStar(line)) {
                refuse(": no bytes before it that it could stand for", kLeaveNothingOut);
            } else if (!isBlankLine(line)) {
                readLine(line);
            } else if (star_ == 0) {
                offsets_.mayRestart();
                repeated_ = 0;
            }
        }
        if (star_ != 0 && capture_.refusal.empty()) {
            refuse(": the dump leaves lines out, and no offset behind it tells how many",
                   kLeaveNothingOut);
        }
        return std::move(capture_);
    }

private:
    /// The line at `at`, which goes to the next one.
    std::string lineAt(std::size_t& at) const
    {
        const auto end = std::min(text_.find('\n', at), text_.size());
        auto line = text_.substr(at, end - at);
        at = end + 1;
        return line;
    }

    DumpLayout findLayout() const
    {
        std::string first;
        std::string second;
        for (std::size_t at = 0; at < text_.size() && second.empty();) {
            const auto line = lineAt(at);
            if (!isBlankLine(line)) {
                (first.empty() ? first : second) = line;
            }
        }
        return layoutOf(first, second);
    }

    void readLine(const std::string& line)
    {
        switch (layout_) {
        case DumpLayout::Bytes:
            append(line, 0, line.size());
            break;
        case DumpLayout::Offsets:
            readBehindOffset(line);
            break;
        case DumpLayout::Words:
            refuse(": these are words, and the order of their bytes is unknown", kGiveBytes);
            break;
        case DumpLayout::Doubtful:
            refuse(": what stands in front may be an offset or bytes", kGiveBytes);
            break;
        }
    }

    void readBehindOffset(const std::string& line)
    {
        const auto offset = leadingDigits(line);
        if (!offset) {
            refuse(": expected an offset in front, as the lines before have it", kGiveBytes);
            return;
        }
        if (star_ != 0 && !repeat(line, *offset)) {
            return;
        }
        if (!offsets_.follow(offset->digits)) {
            refuse(": the offset " + offset->digits + " is not where the bytes before it end",
                   std::string("bytes are missing, or it is none: ") + kGiveBytes);
            return;
        }
        const auto end = endOf(line, *offset);
        if (!end) {
            refuse(": what stands behind the wide gap may be bytes or characters", kGiveBytes);
            return;
        }
        const auto before = capture_.bytes.size();
        append(line, offset->end, *end);
        repeated_ = capture_.bytes.size() - before;
        offsets_.advance(repeated_);
    }

    /// Where the bytes of a line end; nothing if that cannot be told. The next offset decides, or
    /// what it decided before.
    std::optional<std::size_t> endOf(const std::string& line, const LeadingDigits& offset)
    {
        const auto end = endOfBytes(line, offset);
        if (end.longer == 0) {
            middle_ = end.gap != 0 ? end.gap : middle_;
            return end.at;
        }
        if (!middle_) {
            const bool isMiddle = goesOnBehind(wordsUpTo(line, offset, end.longer));
            if (!isMiddle && !goesOnBehind(wordsUpTo(line, offset, end.at))) {
                return std::nullopt;
            }
            middle_ = isMiddle ? end.gap : 0;
        }
        return end.gap == *middle_ ? end.longer : end.at;
    }

    /// Whether the next line has the offset that follows `bytes` more.
    bool goesOnBehind(std::size_t bytes) const
    {
        auto at = at_;
        const auto next = at < text_.size() ? leadingDigits(lineAt(at)) : std::nullopt;
        auto offsets = offsets_;
        offsets.advance(bytes);
        return next && offsets.follow(next->digits);
    }

    /// Puts in what a line with a star left out before this one.
    bool repeat(const std::string& line, const LeadingDigits& offset)
    {
        const bool ends = isBlankLine(line.substr(offset.end));
        const auto gaps = offsets_.leftOut(offset.digits, repeated_, ends);
        const auto star = "line " + std::to_string(star_);
        if (gaps.empty()) {
            refuse(": the offset " + offset.digits + " is not where what " + star +
                       " leaves out can end",
                   kLeaveNothingOut);
        } else if (gaps.size() > 1) {
            refuse(": how much " + star + " leaves out depends on the base of the offsets",
                   kLeaveNothingOut);
        } else if (*gaps.begin() > kMaxCapture - capture_.bytes.size()) {
            refuse(": with what " + star + " leaves out the capture has more than " +
                       std::to_string(kMaxCapture >> 20U) + " MiB",
                   "cut it up");
        } else {
            const auto gap = static_cast<std::size_t>(*gaps.begin());
            capture_.bytes.reserve(capture_.bytes.size() + gap);
            for (std::size_t i = 0; i < gap; ++i) {
                capture_.bytes.push_back(capture_.bytes[capture_.bytes.size() - repeated_]);
            }
            offsets_.advance(gap);
            star_ = 0;
        }
        return star_ == 0;
    }

    void append(const std::string& line, std::size_t at, std::size_t end)
    {
        if (const auto column = appendBytes(line, at, end, capture_.bytes); column != 0) {
            refuse(", column " + std::to_string(column) +
                       ": expected two hexadecimal digits for a byte",
                   kGiveBytes);
        }
    }

    void refuse(const std::string& what, const std::string& advice)
    {
        capture_.refusal = "line " + std::to_string(number_) + what;
        capture_.advice = advice;
    }

    const std::string& text_;
    std::size_t at_ = 0;  ///< where the next line begins
    DumpLayout layout_ = DumpLayout::Bytes;
    DumpOffsets offsets_;
    std::optional<std::size_t>
        middle_;                ///< blanks behind the eighth byte; 0 if only characters are
    std::size_t repeated_ = 0;  ///< bytes of the last line with an offset
    std::size_t star_ = 0;      ///< the number of the line that leaves lines out
    std::size_t number_ = 0;
    Capture capture_;
};

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
    return HexReader(text).read();
}

}  // namespace talvik::ctl
