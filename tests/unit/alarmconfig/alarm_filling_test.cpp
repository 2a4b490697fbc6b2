// Filling placeholders from value pairs. Expected texts are derived by hand from the rules.

#include "tests/unit/alarmconfig/alarm_catalogue_kit.h"

#include <gmock/gmock.h>

namespace {

using namespace talvik::test;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kNoPosition = 0x100400F;

const Pairs kThree{{0, "A"}, {1, "BB"}, {2, "C"}};
const Pairs kGap{{0, "A"}, {5, "F"}};

struct Filling {
    const char* name;
    std::string text;
    Pairs pairs;
    std::string expected;

    friend std::ostream& operator<<(std::ostream& os, const Filling& row) { return os << row.name; }
};

class AlarmFilling : public AlarmCatalogueTest, public testing::WithParamInterface<Filling> {};

TEST_P(AlarmFilling, GivesTheText)
{
    std::string out = "untouched";

    EXPECT_EQ(parser().replaceAlarmParamInfo(GetParam().text, out, GetParam().pairs), 0);

    EXPECT_EQ(out, GetParam().expected);
}

const Filling kFillings[] = {
    {"Empty", "", kThree, ""},
    {"Plain", "plain", kThree, "plain"},
    {"OnePlaceholder", "##00", kThree, "A"},
    {"InTheMiddle", "x##01y", kThree, "xBBy"},
    {"OneAfterTheOther", "##00##01##02", kThree, "ABBC"},
    {"BackwardsAndTwice", "##02-##00-##02", kThree, "C-A-C"},
    {"OneDigitLosesTheNextCharacter", "##1x", kThree, "BB"},
    {"OneDigitLosesOneCharacterOnly", "##1xy", kThree, "BBy"},
    {"OneDigitAtTheEnd", "##1", kThree, "BB"},
    {"OneBlankAtTheEnd", "## ", kThree, "A"},
    {"ThreeDigits", "##012", kThree, "BB2"},
    {"ThreeDigitsBeyond", "##100", kThree, "None0"},
    {"FirstPositionBeyond", "[##03]", kThree, "[None]"},
    {"LastPositionBeyond", "##99", kThree, "None"},
    {"OneDigitBeyondAtTheEnd", "##9", kThree, "None"},
    {"OneDigitBeyondTakesTheNextCharacter", "##9xy", kThree, "Noney"},
    {"LettersAreZero", "##ab", kThree, "A"},
    {"LeadingBlank", "## 1", kThree, "BB"},
    {"LeadingTab", "##\t2", kThree, "C"},
    {"LeadingBlankBeyond", "## 9", kThree, "None"},
    {"PlusSign", "##+1", kThree, "BB"},
    {"MinusSign", "##-1", kThree, "None"},
    {"MinusZero", "##-0", kThree, "A"},
    {"MinusAlone", "##- ", kThree, "A"},
    {"MinusAtTheEnd", "##-", kThree, "A"},
    {"ThreeMarks", "###00", kThree, "A0"},
    {"FourMarks", "####01", kThree, "A01"},
    {"FiveMarks", "#####01", kThree, "A#01"},
    {"OneMark", "#00", kThree, "#00"},
    {"OneMarkAtTheEnd", "##00#", kThree, "A#"},
    {"BraceForADigit", "##{0", kThree, "A"},
    {"BraceBehindIsText", "##01{BB:x}", kThree, "BB{BB:x}"},
    {"SecondMarkEatenByTheFirst", "##0##1", kThree, "A#1"},
    {"NoPairs", "##00 ##", {}, "##00 ##"},
    {"PositionWithoutPair", "##01", kGap, "--"},
    {"PositionWithoutPairAtTheEnd", "x##1", kGap, "x--"},
    {"PositionWithoutPairTakesFour", "##1xy", kGap, "--y"},
    {"PairBeyondTheirNumber", "##05", kGap, "None"},
    {"FirstPairOfAPosition", "##01", {{1, "a"}, {1, "b"}, {0, "z"}}, "a"},
    {"EmptyValue", "a##00b", {{0, ""}}, "ab"},
    {"OnlyEmptyValues", "##00##00", {{0, ""}}, ""},
    {"ValueWithAMark", "Port ##00.", {{0, "#3"}}, "Port #3."},
    {"ValueWithSeparators", "##00", {{0, "a,b;c:{d}&"}}, "a,b;c:{d}&"},
    {"ValueOfAnother", "<##00>", {{0, "##01"}, {1, "x"}}, "<x>"},
    {"ValueAroundAnother", "<##00>", {{0, "a##01b"}, {1, "x"}}, "<axb>"},
    {"ValueWithTwoOthers", "##00", {{0, "##01-##02"}, {1, "x"}, {2, "y"}}, "x-y"},
    {"ThreeDeep", "##00!", {{0, "##01"}, {1, "(##02)"}, {2, "z"}}, "(z)!"},
    {"ValueEatsTheMarkBehind", "##00##00", {{0, "#1#"}}, "#1#1#0"},
    {"ValueEndsWithinAPosition", "##001z", {{0, "##0"}, {1, "y"}}, "yz"},
    {"ValueIsTheMark", "##0001", {{0, "##"}, {1, "y"}}, "y"},
    {"ValueEndsWithHalfAMark", "##00#01.", {{0, "a#"}, {1, "y"}}, "ay."},
    {"ValueIsHalfAMark", "##00#01", {{0, "#"}, {1, "y"}}, "y"},
    {"HalfAMarkAloneStays", "##00 #01", {{0, "#"}, {1, "y"}}, "# #01"},
    {"ValueShiftsThePlaceholderBehind", "##00##01#02", {{0, "#"}, {1, ""}}, "#1#02"},
    {"ValueGivesAnUnknownPosition", "##00", {{0, "##9"}, {1, "y"}}, "None"},
    {"ValueGivesAPositionAtTheEnd", "##00", {{0, "##1"}, {1, "z"}}, "z"},
    {"ValueGivesAMissingPair", "##00.", {{0, "##01"}, {5, "y"}}, "--."},
    {"MarksOverThreeValues", "##00##00##0200", {{0, "q"}, {1, "r"}, {2, "##"}}, "qqq"},
    {"HalvesFromTwoValues", "##00##0100", {{0, "##01"}, {1, "#"}, {2, "k"}}, "#100"},
    {"EmptyValuesBetweenHalves", "##00#02", {{0, "##01"}, {1, "#"}, {2, "k"}}, "k"},
    {"TwiceInTheTextIsNoLoop", "##00,##00", {{0, "<##01>"}, {1, "#"}}, "<#>,<#>"},
};

INSTANTIATE_TEST_SUITE_P(Texts, AlarmFilling, testing::ValuesIn(kFillings),
                         [](const auto& row) { return row.param.name; });

class AlarmFillingLog : public AlarmCatalogueTest {
protected:
    /// Fills `text` and returns what came of it; the log then holds the lines of that alone.
    std::string fill(const std::string& text, const Pairs& pairs, int expected = 0)
    {
        auto& loaded = parser();
        host.log.clear();
        std::string out = "untouched";
        EXPECT_EQ(loaded.replaceAlarmParamInfo(text, out, pairs), expected);
        return out;
    }
};

TEST_F(AlarmFillingLog, SaysNothingOfAnOrdinaryText)
{
    fill("##00 ##01", kThree);

    EXPECT_THAT(host.log, IsEmpty());
}

TEST_F(AlarmFillingLog, RefusesAMarkAtTheEnd)
{
    EXPECT_EQ(fill("x##", kThree, kNoPosition), "untouched");

    EXPECT_THAT(lines(),
                ElementsAre("error 0x10015 replaceAlarmParamInfo: no alarm parameter pos"));
}

TEST_F(AlarmFillingLog, RefusesAMarkAtTheEndOfAValue)
{
    EXPECT_EQ(fill("##00", {{0, "a##"}}, kNoPosition), "untouched");
}

TEST_F(AlarmFillingLog, NamesPositionsBeyondThePairs)
{
    fill("##03##-7", kThree);

    EXPECT_THAT(lines(), ElementsAre("warn 0x1002f replaceAlarmParamInfo: alarm parameter pos 3 is "
                                     "out of range[0, 2]",
                                     "warn 0x1002f replaceAlarmParamInfo: alarm parameter pos -7 "
                                     "is out of range[0, 2]"));
}

TEST_F(AlarmFillingLog, NamesPositionsWithoutPair)
{
    fill("##01", kGap);

    EXPECT_THAT(lines(), ElementsAre("warn 0x1002f replaceAlarmParamInfo: alarm parameter pos 1 is "
                                     "not in the parameters of the detail"));
}

TEST_F(AlarmFillingLog, TracesAroundItsLinesWithTheSignature)
{
    fill("##03", kThree);

    const std::string signature =
        "int CAlarmConfigParser::replaceAlarmParamInfo(std::string, std::string&, const "
        "ValuePairs&)";
    EXPECT_THAT(host.texts("trace"),
                ElementsAre("enter " + signature + "...", "leave " + signature + ": OK"));
}

}  // namespace
