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
     "00000000: 5555 aa0a  UU..\n00000010: 01                                       .\n",
     {0x55, 0x55, 0xAA, 0x0A, 1}},
    {"XxdWithHexInTheCharacters", "00000000: 6162 6364  abcd\n", {'a', 'b', 'c', 'd'}},
    {"Hexdump",
     "00000000  55 aa  01 02                                      |U...|\n00000004\n",
     {0x55, 0xAA, 1, 2}},
    {"HexdumpThatLeavesOut",
     "00000000  55  |U|\n*\n00000010\n",
     {0x55},
     "line 2: the dump leaves lines out here; make it with hexdump -v -C"},
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
