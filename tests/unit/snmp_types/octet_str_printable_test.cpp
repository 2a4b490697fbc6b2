#include "snmp_pp/octet.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using Snmp_pp::OctetStr;

OctetStr octetsOf(const std::string& bytes)
{
    return OctetStr(reinterpret_cast<const unsigned char*>(bytes.data()),
                    static_cast<std::uint32_t>(bytes.size()));
}

struct Row {
    const char* name;
    std::string bytes;
    std::string printable;

    friend std::ostream& operator<<(std::ostream& os, const Row& row) { return os << row.name; }
};

class OctetStrPrintable : public testing::TestWithParam<Row> {};

TEST_P(OctetStrPrintable, IsTextOrDump)
{
    EXPECT_EQ(octetsOf(GetParam().bytes).get_printable(), GetParam().printable);
}

const Row kRows[] = {
    {"Empty", "", ""},
    {"Text", "Fan 1 ~ failed", "Fan 1 ~ failed"},
    {"LineFeedIsText", "a\nb", "a\nb"},
    {"DateAndTime", std::string("\x07\xEA\x0B\x15\x0D\x05\x09\x00", 8),
     "  07 EA 0B 15 0D 05 09 00                            ........\n"},
    {"SeventeenBytes",
     std::string("\x00\x07\x0E\x15\x1C\x23\x2A\x31\x38\x3F\x46\x4D\x54\x5B\x62\x69\x70", 17),
     "  00 07 0E 15 1C 23 2A 31 38 3F 46 4D 54 5B 62 69    .....#*18?FMT[bi\n"
     "  70                                                 p\n"},
    {"SixteenBytes", std::string(16, '\xFF'),
     "  FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF    ................\n"},
    {"LongTextWithOneBadByte", std::string(32, 'a') + "\x01",
     "  61 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61    aaaaaaaaaaaaaaaa\n"
     "  61 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61    aaaaaaaaaaaaaaaa\n"
     "  01                                                 .\n"},
    {"Tab", "a\tb", "  61 09 62                                           a.b\n"},
    {"CarriageReturn", "a\rb", "  61 0D 62                                           a.b\n"},
    {"Nul", std::string("a\0b", 3), "  61 00 62                                           a.b\n"},
    {"Delete", "\x7F", "  7F                                                 .\n"},
    {"FirstBeyondAscii", "\x80", "  80                                                 .\n"},
    {"Utf8Text", "\xC3\xA4", "  C3 A4                                              ..\n"},
    {"LineFeedInADumpIsADot", "\n\x01",
     "  0A 01                                              ..\n"},
};

INSTANTIATE_TEST_SUITE_P(Row, OctetStrPrintable, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

TEST(OctetStrPrintable, PrintsEveryAsciiTextByteAsItself)
{
    for (int byte = 0x20; byte <= 0x7E; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        EXPECT_EQ(octetsOf(text).get_printable(), text);
    }
}

TEST(OctetStrPlaces, IsTextForTheSameBytesAtEveryPlace)
{
    constexpr std::size_t kSize = 37;
    for (int byte = 0; byte <= 0xFF; ++byte) {
        const bool isText = byte == '\n' || (byte >= ' ' && byte <= '~');
        for (std::size_t at = 0; at < kSize; ++at) {
            std::string bytes(kSize, 'a');
            bytes[at] = static_cast<char>(byte);
            EXPECT_EQ(octetsOf(bytes).get_printable() == bytes, isText) << byte << " at " << at;
        }
    }
}

}  // namespace
