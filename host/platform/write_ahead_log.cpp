#include "host/platform/write_ahead_log.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>

namespace talvik {

namespace {

constexpr std::size_t kHeaderSize = 32;
constexpr std::size_t kFrameHeaderSize = 24;
constexpr std::uint32_t kMagic = 0x377F0682;  // the lowest bit: the sums are of big-endian words
constexpr std::uint32_t kBigEndian = 1;

using Sums = std::array<std::uint32_t, 2>;

std::uint32_t wordAt(const std::string& log, std::size_t position, bool bigEndian = true)
{
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto octet = static_cast<unsigned char>(log[position + (bigEndian ? i : 3 - i)]);
        word = word << 8U | octet;
    }
    return word;
}

/// A log that has its header.
class Log {
public:
    explicit Log(const std::string& octets)
        : octets_(octets),
          bigEndian_((wordAt(octets, 0) & kBigEndian) != 0),
          pageSize_(wordAt(octets, 8))
    {
    }

    /// Checks the header and leaves its sums for the first frame.
    bool headerIsWhole()
    {
        add(0, kHeaderSize - 8);
        return (wordAt(octets_, 0) & ~kBigEndian) == kMagic && isSumAt(kHeaderSize - 8) &&
               pageSize_ >= 512;
    }

    std::size_t frameSize() const { return kFrameHeaderSize + pageSize_; }

    bool frameIsWhole(std::size_t frame)
    {
        add(frame, 8);
        add(frame + kFrameHeaderSize, pageSize_);
        return isOfThisLog(frame) && isSumAt(frame + 16);
    }

    /// False for what is left of a log that was there before.
    bool isOfThisLog(std::size_t frame) const
    {
        return wordAt(octets_, frame + 8) == wordAt(octets_, 16) &&
               wordAt(octets_, frame + 12) == wordAt(octets_, 20);
    }

    bool endsTransaction(std::size_t frame) const { return wordAt(octets_, frame + 4) != 0; }

private:
    void add(std::size_t position, std::size_t count)
    {
        for (const auto end = position + count; position < end; position += 8) {
            sums_[0] += wordAt(octets_, position, bigEndian_) + sums_[1];
            sums_[1] += wordAt(octets_, position + 4, bigEndian_) + sums_[0];
        }
    }

    bool isSumAt(std::size_t position) const
    {
        return wordAt(octets_, position) == sums_[0] && wordAt(octets_, position + 4) == sums_[1];
    }

    const std::string& octets_;
    const bool bigEndian_;
    const std::size_t pageSize_;
    Sums sums_{};
};

}  // namespace

std::string findingInLog(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string octets{std::istreambuf_iterator<char>(file), {}};
    if (octets.size() <= kHeaderSize) {
        return {};
    }
    Log log(octets);
    if (!log.headerIsWhole()) {
        return "the header of its write-ahead log is damaged";
    }
    const auto size = log.frameSize();
    auto frame = kHeaderSize;
    while (octets.size() - frame >= size && log.frameIsWhole(frame)) {
        frame += size;
    }
    bool ended = false;
    for (; octets.size() - frame >= size; frame += size) {
        if (ended && log.isOfThisLog(frame)) {
            return "a change in the midst of its write-ahead log is damaged";
        }
        ended = ended || (log.isOfThisLog(frame) && log.endsTransaction(frame));
    }
    return {};
}

}  // namespace talvik
