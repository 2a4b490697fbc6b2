#include "tools/safe_text.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using namespace talvik::ctl;

struct Text {
    const char* name;
    std::string bytes;
    std::string printed;
    std::string json;

    friend std::ostream& operator<<(std::ostream& os, const Text& row) { return os << row.name; }
};

const Text kTexts[] = {
    {"Empty", "", "", ""},
    {"Plain", "traps.example.net", "traps.example.net", "traps.example.net"},
    {"Backslash", "a\\x41", "a\\\\x41", "a\\x41"},
    {"LineFeed", "a\nb", "a\\x0Ab", "a\nb"},
    {"Escape", "\x1B[2J", "\\x1B[2J", "\x1B[2J"},
    {"Nul", std::string("a\0b", 3), "a\\x00b", std::string("a\0b", 3)},
    {"Delete", "\x7F", "\\x7F", "\x7F"},
    {"LastControlOfLatin1", "\xC2\x9F", "\\xC2\\x9F", "\xC2\x9F"},
    {"FirstBehindTheControls", "\xC2\xA0", "\xC2\xA0", "\xC2\xA0"},
    // NOLINTBEGIN(misc-misleading-bidirectional): that is what these rows are about
    {"RightToLeftOverride", "\xE2\x80\xAE", "\\xE2\\x80\\xAE", "\xE2\x80\xAE"},
    {"RightToLeftMark", "\xE2\x80\x8F", "\\xE2\\x80\\x8F", "\xE2\x80\x8F"},
    {"DirectionIsolate", "\xE2\x81\xA7", "\\xE2\\x81\\xA7", "\xE2\x81\xA7"},
    // NOLINTEND(misc-misleading-bidirectional)
    {"LineSeparator", "\xE2\x80\xA8", "\\xE2\\x80\\xA8", "\xE2\x80\xA8"},
    {"ByteOrderMark", "\xEF\xBB\xBF", "\\xEF\\xBB\\xBF", "\xEF\xBB\xBF"},
    {"TwoBytes", "\xC3\xA9", "\xC3\xA9", "\xC3\xA9"},
    {"ThreeBytes", "\xE2\x82\xAC", "\xE2\x82\xAC", "\xE2\x82\xAC"},
    {"FourBytes", "\xF0\x9F\x90\x9F", "\xF0\x9F\x90\x9F", "\xF0\x9F\x90\x9F"},
    {"LastOfAll", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
    {"BeyondTheLast", "\xF4\x90\x80\x80", "\\xF4\\x90\\x80\\x80", "\\xF4\\x90\\x80\\x80"},
    {"NoSuchFirstByte", "\xF8\xFF", "\\xF8\\xFF", "\\xF8\\xFF"},
    {"LoneContinuation", "a\x80", "a\\x80", "a\\x80"},
    {"CutOff", "a\xE2\x82", "a\\xE2\\x82", "a\\xE2\\x82"},
    {"CutOffByALetter", "\xC3z", "\\xC3z", "\\xC3z"},
    {"OverlongInTwo", "\xC0\xAF", "\\xC0\\xAF", "\\xC0\\xAF"},
    {"OverlongInThree", "\xE0\x9F\xBF", "\\xE0\\x9F\\xBF", "\\xE0\\x9F\\xBF"},
    {"OverlongInFour", "\xF0\x8F\xBF\xBF", "\\xF0\\x8F\\xBF\\xBF", "\\xF0\\x8F\\xBF\\xBF"},
    {"FirstInThree", "\xE0\xA0\x80", "\xE0\xA0\x80", "\xE0\xA0\x80"},
    {"FirstInFour", "\xF0\x90\x80\x80", "\xF0\x90\x80\x80", "\xF0\x90\x80\x80"},
    {"Surrogate", "\xED\xA0\x80", "\\xED\\xA0\\x80", "\\xED\\xA0\\x80"},
    {"BelowTheSurrogates", "\xED\x9F\xBF", "\xED\x9F\xBF", "\xED\x9F\xBF"},
};

class SafeText : public testing::TestWithParam<Text> {};

TEST_P(SafeText, CanBePrinted)
{
    EXPECT_EQ(printable(GetParam().bytes), GetParam().printed);
}

TEST_P(SafeText, IsUtf8ForJson)
{
    EXPECT_EQ(validUtf8(GetParam().bytes), GetParam().json);
}

INSTANTIATE_TEST_SUITE_P(Bytes, SafeText, testing::ValuesIn(kTexts),
                         [](const auto& row) { return row.param.name; });

TEST(ShownLength, CountsColumns)
{
    EXPECT_EQ(shownLength(""), 0u);
    EXPECT_EQ(shownLength("abc"), 3u);
    EXPECT_EQ(shownLength("\xC3\xA9\xE2\x82\xAC"), 2u);
    EXPECT_EQ(shownLength("\xE7\xA1\xAC\xE7\x9B\x98"), 4u);  // two Han characters
    EXPECT_EQ(shownLength("\xEF\xBC\xA1"), 2u);              // a full-width letter
    EXPECT_EQ(shownLength("\xF0\x9F\x90\x9F"), 2u);
    EXPECT_EQ(shownLength("e\xCC\x81"), 1u);  // an accent on the letter before it
}

struct Cut {
    const char* name;
    std::string text;
    std::size_t width;
    std::string shown;

    friend std::ostream& operator<<(std::ostream& os, const Cut& row) { return os << row.name; }
};

const Cut kCuts[] = {
    {"Fits", "abc", 3, "abc"},
    {"IsTooLong", "abcd", 3, "ab\u2026"},
    {"LeavesOneColumn", "abcd", 1, "\u2026"},
    {"LeavesNone", "abcd", 0, ""},
    {"EndsBeforeAWideCharacter", "a\u786C\u76D8", 3, "a\u2026"},
    {"EndsBehindAWideCharacter", "a\u786C\u76D8", 4, "a\u786C\u2026"},
    {"KeepsAnAccent", "ae\u0301cd", 3, "ae\u0301\u2026"},
    {"CutsBetweenCharacters", "\u00E9\u00E9\u00E9", 2, "\u00E9\u2026"},
};

class CutToWidth : public testing::TestWithParam<Cut> {};

TEST_P(CutToWidth, MarksWhatIsMissing)
{
    const auto shown = cutToWidth(GetParam().text, GetParam().width);

    EXPECT_EQ(shown, GetParam().shown);
    EXPECT_LE(shownLength(shown), GetParam().width);
}

INSTANTIATE_TEST_SUITE_P(Texts, CutToWidth, testing::ValuesIn(kCuts),
                         [](const auto& row) { return row.param.name; });

}  // namespace
