#include "tools/package_input.h"

#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using Bytes = std::vector<unsigned char>;

Bytes zerosBetween(Bytes bytes, std::size_t zeros, const Bytes& behind)
{
    bytes.resize(bytes.size() + zeros);
    bytes.insert(bytes.end(), behind.begin(), behind.end());
    return bytes;
}

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
     "00000000  55 55 00 00 00 00 00 00  00 00                    |UU........|\n"
     "0000000a  00 00 00 00 00 00 00 00  00 00                    |..........|\n*\n"
     "0000001e  ff                                                |.|\n0000001f\n",
     zerosBetween({0x55, 0x55}, 28, {0xFF})},
    {"XxdThatLeavesOut", "00000000: 5555  UU\n00000002: 0000  ..\n*\n0000000a: ff  .\n",
     zerosBetween({0x55, 0x55}, 8, {0xFF})},
    {"OdThatLeavesOutUpToItsEnd",
     "0000000 55 55 00 00 00 00 00 00\n0000010 00 00 00 00 00 00 00 00\n"
     "0000020 00 00 00 00 00 00 00 00\n*\n0000033\n",
     zerosBetween({0x55, 0x55}, 25, {})},
    {"LeavesOutPartOfALine",
     "00000000: 55aa\n00000002: 0000\n*\n0000000b: ff\n",
     {0x55, 0xAA, 0, 0},
     "line 4: the offset 0000000b is not where what line 3 leaves out can end"},
    {"LeavesOutInAnUnknownBase",
     "000000 55 55\n*\n000010 01\n",
     {0x55, 0x55},
     "line 3: how much line 2 leaves out depends on the base of the offsets"},
    {"LeavesOutAndEnds",
     "00000000: 55aa\n*\n",
     {0x55, 0xAA},
     "line 2: the dump leaves lines out, and no offset behind it tells how many"},
    {"LeavesOutMoreThanACaptureMayHave",
     "00000000: 55aa\n*\n7ffffffe: 01\n",
     {0x55, 0xAA},
     "line 3: with what line 2 leaves out the capture has more than 64 MiB"},
    {"LeavesOutTheFirstLine",
     "00000000:\n*\n00000010: 01\n",
     {},
     "line 2: no bytes before it that it could stand for"},
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
    {"WideGapInTheMiddle",
     "00000000  55 55 02 03 04 05 06 07   08 09 0a 0b 0c 0d 0e 0f\n"
     "00000010  55 01 02 03 04 05 06 07   08 09\n",
     {0x55, 0x55, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0x55, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
    {"WideGapInTheMiddleAndCharacters",
     "0010  55 55 02 03 04 05 06 07    08 09 0a 0b 0c 0d 0e 0f   12 34 56\n"
     "0020  31 32 20 33 34 20 35 36                              12 34 56\n",
     {0x55, 0x55, 2,  3,  4,    5,    6,    7,    8,    9,    10,   11,
      12,   13,   14, 15, 0x31, 0x32, 0x20, 0x33, 0x34, 0x20, 0x35, 0x36}},
    {"CharactersLikeBytes",
     "0000000 31 32 20 33 34 20 35 36   12 34 56\n0000010 31 32 20 33 34 20 35 36   12 34 56\n",
     {0x31, 0x32, 0x20, 0x33, 0x34, 0x20, 0x35, 0x36, 0x31, 0x32, 0x20, 0x33, 0x34, 0x20, 0x35,
      0x36}},
    {"WideGapWithoutALineBehind",
     "0000  55 55 02 03 04 05 06 07   08 09\n",
     {},
     "line 1: what stands behind the wide gap may be bytes or characters"},
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
