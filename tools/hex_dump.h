#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

/// What stands around the bytes in what other programs make of a file: offsets in front of them and
/// characters behind.
namespace talvik::ctl {

/// Four digits or more that a line begins with.
struct LeadingDigits {
    std::string digits;
    std::size_t end = 0;  ///< where what follows them begins
    bool colon = false;   ///< one stood behind them
};

std::optional<LeadingDigits> leadingDigits(const std::string& line);

/// Where the bytes of a line with an offset end, and the characters begin.
struct EndOfBytes {
    std::size_t at = 0;
    std::size_t longer = 0;  ///< the other end if the wide gap behind eight bytes is none; or 0
    std::size_t gap = 0;     ///< blanks between the eighth byte and the ninth, or before `longer`
};

EndOfBytes endOfBytes(const std::string& line, const LeadingDigits& offset);

/// How many words stand between the offset and `end`.
std::size_t wordsUpTo(const std::string& line, const LeadingDigits& offset, std::size_t end);

/// The offsets of a dump: each is where the bytes of the lines before it end, counted in the same
/// base of 16, 10 or 8.
class DumpOffsets {
public:
    /// Whether `digits` can be the next one. The first may be any.
    bool follow(const std::string& digits);

    /// So many bytes stood behind it.
    void advance(std::size_t bytes);

    /// Behind a line of `bytes` that is left out one or more times: by how many bytes each base
    /// makes `digits` go on, without repetition. Only whole lines are left out, unless `ends`.
    std::set<std::uint64_t> leftOut(const std::string& digits, std::size_t bytes, bool ends) const;

    /// The next one may be 0, as another dump may begin.
    void mayRestart() { mayRestart_ = true; }

private:
    struct Reading {
        int base;
        std::uint64_t next = 0;
        bool possible = true;
    };

    std::array<Reading, 3> readings_ = {Reading{16}, Reading{10}, Reading{8}};
    bool first_ = true;
    bool mayRestart_ = false;
};

enum class DumpLayout {
    Bytes,     ///< nothing but bytes
    Offsets,   ///< each line begins with its offset
    Words,     ///< as Offsets, but with words whose order of bytes is unknown
    Doubtful,  ///< what stands in front may be offsets or bytes
};

/// The layout of a text that begins with these lines; `second` is empty if there is none.
DumpLayout layoutOf(const std::string& first, const std::string& second);

}  // namespace talvik::ctl
