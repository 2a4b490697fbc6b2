#include "host/snmp/trap_text.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using talvik::isText;
using talvik::ObjectId;
using talvik::plainText;
using talvik::shortened;
using talvik::shortenedSize;
using talvik::Syntax;
using talvik::TrapBinding;

struct Cleaning {
    const char* name;
    std::string text;
    std::string plain;

    friend std::ostream& operator<<(std::ostream& os, const Cleaning& row)
    {
        return os << row.name;
    }
};

class TrapTextCleaning : public testing::TestWithParam<Cleaning> {};

TEST_P(TrapTextCleaning, LeavesPlainUtf8)
{
    EXPECT_EQ(plainText(GetParam().text), GetParam().plain);
}

const Cleaning kCleanings[] = {
    {"Nothing", "", ""},
    {"Ascii", "Fan 3 failed", "Fan 3 failed"},
    {"LineFeedTabAndReturn", "a\nb\tc\r\nd", "a b c  d"},
    {"Nul", std::string("a\0b", 3), "a b"},
    {"Delete", "a\x7F", "a "},
    {"ControlOfTwoOctets", "a\xC2\x85z", "a z"},
    {"Umlaut", "K\xC3\xBChler", "K\xC3\xBChler"},
    {"FourOctets", "\xF0\x9F\x94\xA5", "\xF0\x9F\x94\xA5"},
    {"Latin1", "K\xFChler", "K\xEF\xBF\xBDhler"},
    {"EachStrayOctet", "\xFF\xFE", "\xEF\xBF\xBD\xEF\xBF\xBD"},
    {"CutOffCharacter", "ab\xE2\x82", "ab\xEF\xBF\xBD\xEF\xBF\xBD"},
    {"Surrogate", "\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
};

INSTANTIATE_TEST_SUITE_P(Texts, TrapTextCleaning, testing::ValuesIn(kCleanings),
                         [](const auto& row) { return row.param.name; });

TEST(TrapTextPlaces, TakesTheSameOctetsAtEveryPlace)
{
    constexpr std::size_t kSize = 37;
    for (int octet = 0; octet <= 0x7F; ++octet) {
        const bool isControl = octet < ' ' || octet == 0x7F;
        for (std::size_t at = 0; at < kSize; ++at) {
            std::string text(kSize, 'a');
            text[at] = static_cast<char>(octet);
            auto expected = text;
            expected[at] = isControl ? ' ' : text[at];
            EXPECT_EQ(plainText(text), expected) << octet << " at " << at;
        }
    }
}

struct Cut {
    const char* name;
    std::string text;
    std::size_t atMost;
    std::string result;

    friend std::ostream& operator<<(std::ostream& os, const Cut& row) { return os << row.name; }
};

class TrapTextCut : public testing::TestWithParam<Cut> {};

TEST_P(TrapTextCut, EndsAtACharacter)
{
    const auto& row = GetParam();

    EXPECT_EQ(shortened(row.text, row.atMost), row.result);
    EXPECT_EQ(shortenedSize(row.text, row.atMost), row.result.size());
}

const Cut kCuts[] = {
    {"FitsExactly", "abcdef", 6, "abcdef"},
    {"OneTooLong", "abcdef", 5, "ab…"},
    {"RoomForTheMarkOnly", "abcdef", 3, "…"},
    {"NoRoomForTheMark", "abcdef", 2, ""},
    {"NoRoom", "abcdef", 0, ""},
    {"Empty", "", 0, ""},
    {"BehindACharacterOfTwo", "aü\xC3\xA4xyz", 6, "aü…"},
    {"WithinACharacterOfTwo", "aüxyzw", 5, "a…"},
    {"WithinACharacterOfFour", "\xF0\x9F\x94\xA5zzz", 6, "…"},
    {"BehindACharacterOfFour", "\xF0\x9F\x94\xA5zzzz", 7, "\xF0\x9F\x94\xA5…"},
};

INSTANTIATE_TEST_SUITE_P(Texts, TrapTextCut, testing::ValuesIn(kCuts),
                         [](const auto& row) { return row.param.name; });

TrapBinding octets(const ObjectId& name, std::size_t size)
{
    return {name, {Syntax::OctetString, 0, std::string(size, '\0')}};
}

const ObjectId kTime{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 3, 1, 1, 8, 0};
const ObjectId kOwnOidTime{1, 3, 6, 1, 4, 1, 99999, 2, 251, 20, 1, 3, 8, 0};
const ObjectId kTitle{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 3, 1, 1, 4, 0};

TEST(TrapTextChoice, LeavesTheTimeOfAnAlarmAlone)
{
    EXPECT_FALSE(isText(octets(kTime, 8)));
    EXPECT_FALSE(isText(octets(kTime, 11)));
    EXPECT_FALSE(isText(octets(kOwnOidTime, 11)));
}

TEST(TrapTextChoice, TakesEveryOtherString)
{
    EXPECT_TRUE(isText(octets(kTime, 10))) << "a time as text";
    EXPECT_TRUE(isText(octets(kTitle, 8)));
    EXPECT_TRUE(isText(octets({1, 3, 6, 1}, 11)));
}

TEST(TrapTextChoice, TakesNoNumber)
{
    EXPECT_FALSE(isText({kTitle, {Syntax::Counter64, 1, ""}}));
}

}  // namespace
