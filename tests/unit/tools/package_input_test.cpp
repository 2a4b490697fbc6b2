#include "tools/package_input.h"

#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using Bytes = std::vector<unsigned char>;

struct Text {
    const char* name;
    std::string text;
    Bytes bytes;
    std::string refusal = {};

    friend std::ostream& operator<<(std::ostream& os, const Text& row) { return os << row.name; }
};

const Text kTexts[] = {
    {"Plain", "55aaFF\n", {0x55, 0xAA, 0xFF}},
    {"Blanks", "55 aa\tFF\r\n01\n", {0x55, 0xAA, 0xFF, 1}},
    {"LanguageOfC", "0x55, 0xAA,0Xff", {0x55, 0xAA, 0xFF}},
    {"Colons", "55:aa:ff", {0x55, 0xAA, 0xFF}},
    {"Xxd",
     "00000000: 5555 aa0a  UU..\n00000004: 01                                       .\n",
     {0x55, 0x55, 0xAA, 0x0A, 1}},
    {"XxdWithHexInTheCharacters", "00000000: 6162 6364  abcd\n", {'a', 'b', 'c', 'd'}},
    {"Hexdump",
     "00000000  55 aa 7c 02 05 06 07 08  09                       |U.|......|\n00000009\n",
     {0x55, 0xAA, 0x7C, 2, 5, 6, 7, 8, 9}},
    {"HexdumpThatLeavesOut",
     "00000000  55  |U|\n*\n00000010\n",
     {0x55},
     "line 2: the dump leaves lines out here"},
    {"XxdWithOffsetsInDecimal",
     "00000000: 5555 5555 5555 5555 5555  UUUUUUUUUU\n00000010: 01  .\n",
     {0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 1}},
    {"XxdFromTheMiddle", "0000001f: 55aa  U.\n00000021: 01  .\n", {0x55, 0xAA, 1}},
    {"XxdThatLacksALine",
     "00000000: 55aa  U.\n00000004: 01  .\n",
     {0x55, 0xAA},
     "line 2: the offset 00000004 is not where the bytes before it end"},
    {"OdInHexadecimal", "000000 55 aa\n000002 01 02\n000004\n", {0x55, 0xAA, 1, 2}},
    {"OdInOctal",
     "0000000 55 55 55 55 55 55 55 55\n0000010 01 02\n0000012\n",
     {0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 1, 2}},
    {"OdInDecimal",
     "0000000 55 55 55 55 55 55 55 55 55 55\n0000010 01\n0000011\n",
     {0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 1}},
    {"OdFromTheMiddle", "000010 55 aa\n000012 01\n000013\n", {0x55, 0xAA, 1}},
    {"OdWithCharacters", "000000 55 aa  >U.<\n000002\n", {0x55, 0xAA}},
    {"OdOfNothing", "000000\n", {}},
    {"OdThatLeavesOut",
     "000000 55 55\n*\n000010 01\n",
     {0x55, 0x55},
     "line 2: the dump leaves lines out here"},
    {"OdOfWords",
     "0000000 5555 5555 0003\n0000006\n",
     {},
     "line 1: these are words, and the order of their bytes is unknown"},
    {"OdOfLongWords",
     "000000 55555555 00000003\n000008\n",
     {},
     "line 1: these are words, and the order of their bytes is unknown"},
    {"PacketsOfTshark",
     "0000  55 55 00 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e   UU..............\n"
     "0010  ab 61 62                                          .ab\n\n"
     "0000  55                                                U\n",
     {0x55, 0x55, 0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xAB, 'a', 'b', 0x55}},
    {"PacketsWithAGapInTheMiddle",
     "0000   55 55 00 02 03 04 05 06  07 08 09 0a 0b 0c 0d 0e   UU..............\n"
     "0010   01                                                 .\n",
     {0x55, 0x55, 0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 1}},
    {"PacketOfTcpdump",
     "\t0x0000:  5555 0002 0304 0506 0708 090a 0b0c 0d0e  UU..............\n"
     "\t0x0010:  ab61 62                                  .ab\n",
     {0x55, 0x55, 0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xAB, 'a', 'b'}},
    {"OffsetsThatDoNotCount",
     "000000 55 aa\n000010 01 02\n",
     {0x55, 0xAA},
     "line 2: the offset 000010 is not where the bytes before it end"},
    {"LineWithoutItsOffset",
     "000000 55 aa\n01 02\n",
     {0x55, 0xAA},
     "line 2: expected an offset in front, as the lines before have it"},
    {"OffsetOrBytes", "0300 01 02\n", {}, "line 1: what stands in front may be an offset or bytes"},
    {"MagicInOnePiece", "55555555 03 00\n", {0x55, 0x55, 0x55, 0x55, 3, 0}},
    {"Words",
     "55555555 03000000\n00000000 ffff\n",
     {0x55, 0x55, 0x55, 0x55, 3, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF}},
    {"HalfAByte", "55 a\n", {0x55}, "line 1, column 4: expected two hexadecimal digits for a byte"},
    {"NoDigit",
     "55\n aag0",
     {0x55, 0xAA},
     "line 2, column 4: expected two hexadecimal digits for a byte"},
    {"Nothing", "", {}},
};

class BytesOfHex : public testing::TestWithParam<Text> {};

TEST_P(BytesOfHex, AreReadUpToWhatCannotBe)
{
    const auto capture = bytesOfHex(GetParam().text);

    EXPECT_EQ(capture.bytes, GetParam().bytes);
    EXPECT_EQ(capture.refusal, GetParam().refusal);
    EXPECT_EQ(capture.advice.empty(), capture.refusal.empty());
}

INSTANTIATE_TEST_SUITE_P(Texts, BytesOfHex, testing::ValuesIn(kTexts),
                         [](const auto& row) { return row.param.name; });

TEST(LooksLikeHex, TellsTextFromPackages)
{
    EXPECT_TRUE(looksLikeHex("55555555 03\n"));
    EXPECT_TRUE(looksLikeHex("no hex, but no package either"));
    EXPECT_FALSE(looksLikeHex("UUUU, the magic"));
    EXPECT_FALSE(looksLikeHex(std::string("55\0", 3)));
    EXPECT_FALSE(looksLikeHex(""));
}

TEST(ReadCapture, StopsBehindTheLimit)
{
    std::istringstream small("abc");
    EXPECT_EQ(readCapture(small), "abc");

    std::istringstream large(std::string(kMaxCapture + 100, 'x'));
    EXPECT_EQ(readCapture(large).size(), kMaxCapture + 1);
}

}  // namespace
