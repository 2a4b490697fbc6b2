// Value pairs, braces, escapes and single replacements. Expected values are derived by hand.

#include "alarmconfig/alarm_text.h"
#include "tests/unit/alarmconfig/alarm_catalogue_kit.h"

#include <gmock/gmock.h>

namespace {

using namespace talvik::test;
using testing::ElementsAre;
using testing::IsEmpty;

const Fields kAbc{"a", "b", "c"};

struct PairsOf {
    const char* name;
    std::string detail;
    Fields fields;
    Pairs expected;

    friend std::ostream& operator<<(std::ostream& os, const PairsOf& row) { return os << row.name; }
};

class AlarmPairs : public FakeHostTest, public testing::WithParamInterface<PairsOf> {};

TEST_P(AlarmPairs, AreThoseOfTheDetail)
{
    auto fields = GetParam().fields;
    Pairs pairs;

    parserParmeterByDetail(fields, pairs, GetParam().detail);

    EXPECT_EQ(pairs, GetParam().expected);
    EXPECT_EQ(fields, GetParam().fields);
}

const PairsOf kPairs[] = {
    {"NothingAtAll", "", {}, {}},
    {"NoFields", "##00", {}, {{0, "--"}}},
    {"NoPlaceholders", "text", kAbc, {{0, "a"}, {1, "b"}, {2, "c"}}},
    {"NamedFieldsFirst", "##01", kAbc, {{1, "b"}, {0, "a"}, {2, "c"}}},
    {"OneBeyond", "##03", kAbc, {{3, "--"}, {0, "a"}, {1, "b"}, {2, "c"}}},
    {"LastPosition", "##99", {"a"}, {{99, "--"}, {0, "a"}}},
    {"NamedTwice", "##01##01", kAbc, {{1, "b"}, {1, "b"}, {0, "a"}, {2, "c"}}},
    {"MarkAtTheEnd", "##", kAbc, {}},
    {"MarkAtTheEndEndsItAll", "##01 ##", kAbc, {{1, "b"}}},
    {"OneDigitAtTheEnd", "##1", {"a", "b"}, {{1, "b"}, {0, "a"}}},
    {"ThreeMarks", "###01", {"a", "b"}, {{0, "a"}, {1, "b"}}},
    {"FourMarks", "####01", {"a", "b"}, {{0, "a"}, {1, "b"}}},
    {"BlankIsNoNumberHere", "## 1", {"a", "b"}, {{0, "a"}, {1, "b"}}},
    {"MinusIsNoNumberHere", "##-1", {"a", "b"}, {{0, "a"}, {1, "b"}}},
    {"Map", "##00{a:x}", {"a"}, {{0, "x"}}},
    {"SecondItem", "##00{b:x;a:y}", {"a"}, {{0, "y"}}},
    {"FirstItemThatFits", "##00{a:x;a:y}", {"a"}, {{0, "x"}}},
    {"NoItemFits", "##00{b:x}", {"a"}, {{0, "a"}}},
    {"EmptyMap", "##00{}", {"a"}, {{0, "a"}}},
    {"EmptyMapBeyond", "##07{}", {"a"}, {{7, "--"}, {0, "a"}}},
    {"MapBeyond", "##07{a:x}", {"a"}, {{7, "--"}, {0, "a"}}},
    {"ItemOfThreeParts", "##00{a:x:y}", {"a"}, {{0, "a"}}},
    {"ItemOfOnePart", "##00{a}", {"a"}, {{0, "a"}}},
    {"ItemAfterOneOfThreeParts", "##00{a:x:y;a:z}", {"a"}, {{0, "z"}}},
    {"ItemWithEmptyText", "##00{a:}", {"a"}, {{0, ""}}},
    {"ItemWithEmptyRaw", "##00{:x}", {""}, {{0, "x"}}},
    {"ItemComparesCase", "##00{A:x}", {"a"}, {{0, "a"}}},
    {"ItemComparesBlanks", "##00{ a:x}", {"a"}, {{0, "a"}}},
    {"ItemComparesWholeTexts", "##00{aa:x}", {"a"}, {{0, "a"}}},
    {"EmptyItems", "##00{;;a:x;}", {"a"}, {{0, "x"}}},
    {"FieldWithColon", "##00{a:b:x}", {"a:b"}, {{0, "a:b"}}},
    {"FieldWithSemicolon", "##00{a;b:x}", {"a;b"}, {{0, "a;b"}}},
    {"FieldWithPlaceholder", "##00{##01:x}", {"##01", "b"}, {{0, "x"}, {1, "b"}}},
    {"BraceSevenAway", "##00123{a:x}", {"a"}, {{0, "x"}}},
    {"BraceEightAway", "##001234{a:x}", {"a"}, {{0, "a"}}},
    {"BraceInThePosition", "##0{a:x}", {"a"}, {{0, "x"}}},
    {"BraceRightAfterTheMark", "##{a:x}", {"a"}, {{0, "x"}}},
    {"BraceOfTheNextOneToo", "##0##1{a:x;b:y}", {"a", "b"}, {{0, "x"}, {1, "y"}}},
    {"BraceOfTheNextTooFar", "##00##01{a:x;b:y}", {"a", "b"}, {{0, "a"}, {1, "y"}}},
    {"NoClosingBrace", "##01 ##00{a:x", {"a", "b"}, {{1, "b"}}},
    {"OpenBraceFarAwayIsNone", "##00 far {a:x", {"a"}, {{0, "a"}}},
    {"ClosingBraceFirst", "##00}{a:x}", {"a"}, {{0, "a"}}},
    {"ClosingBraceOfAnEarlierMap", "##00{a:x} ##01{b:y}", {"a", "b"}, {{0, "x"}, {1, "y"}}},
    {"PlaceholderInAMap", "##00{##01{b:z}", {"a", "b"}, {{0, "a"}, {1, "z"}}},
};

INSTANTIATE_TEST_SUITE_P(Details, AlarmPairs, testing::ValuesIn(kPairs),
                         [](const auto& row) { return row.param.name; });

class AlarmSteps : public AlarmCatalogueTest {
protected:
    static std::string withoutBraces(std::string text)
    {
        replaceBraceWithEmptyString(text);
        return text;
    }

    static Fields fieldsOf(const std::string& params)
    {
        Fields fields{"there"};
        parser().parseAlarmParamList(params, fields);
        return fields;
    }
};

TEST_F(AlarmSteps, AppendPairsBehindThoseThatAreThere)
{
    auto fields = kAbc;
    Pairs pairs{{1, "old"}, {500, "far"}};

    parserParmeterByDetail(fields, pairs, "");

    EXPECT_EQ(pairs, (Pairs{{1, "old"}, {500, "far"}, {0, "a"}, {2, "c"}}));
}

TEST_F(AlarmSteps, NameFieldsBeyondTwoDigitsOnce)
{
    Fields fields(300, "v");
    Pairs pairs{{200, "old"}};

    parserParmeterByDetail(fields, pairs, "##00");

    ASSERT_EQ(pairs.size(), 300u);
    EXPECT_EQ(pairs[2], (std::pair<unsigned, std::string>(1, "v")));
    EXPECT_EQ(pairs[200].first, 199u);
    EXPECT_EQ(pairs[201].first, 201u);
}

TEST_F(AlarmSteps, ReportADetailWithoutClosingBrace)
{
    auto fields = kAbc;
    Pairs pairs;

    parserParmeterByDetail(fields, pairs, "##00{a:x");

    EXPECT_THAT(pairs, IsEmpty());
    EXPECT_THAT(lines(),
                ElementsAre("debug 0xffff parserParmeterByDetail: parserParmeterByDetail error"));
}

TEST_F(AlarmSteps, DeleteBraceBlocks)
{
    EXPECT_EQ(withoutBraces(""), "");
    EXPECT_EQ(withoutBraces("abc"), "abc");
    EXPECT_EQ(withoutBraces("a{b}c"), "ac");
    EXPECT_EQ(withoutBraces("{a}{}b{c}"), "b");
    EXPECT_EQ(withoutBraces("{a{b}c}"), "c}");
    EXPECT_EQ(withoutBraces("a}b{c}d"), "a}bd");
    EXPECT_THAT(host.log, IsEmpty());
}

TEST_F(AlarmSteps, LeaveTheRestBehindAnOpenBrace)
{
    EXPECT_EQ(withoutBraces("a{b}c{d e{"), "ac{d e{");

    EXPECT_THAT(lines(), ElementsAre("debug 0xffff replaceBraceWithEmptyString: "
                                     "replaceBraceWithEmptyString error"));
}

TEST_F(AlarmSteps, WriteTheFirstPairOverTheText)
{
    const Pairs pairs{{1, "one"}, {1, "two"}, {4294967295, "far"}};
    std::string text = "ab##01cd";

    EXPECT_TRUE(replaceParaWithBraceValue(text, 1, 2, 4, pairs));
    EXPECT_EQ(text, "abonecd");
    EXPECT_TRUE(replaceParaWithBraceValue(text, 1, 5, 4, pairs));
    EXPECT_EQ(text, "aboneone");
    EXPECT_TRUE(replaceParaWithBraceValue(text, 1, 8, 4, pairs));
    EXPECT_EQ(text, "aboneoneone");
}

TEST_F(AlarmSteps, LeaveTheTextWithoutPairOrPlace)
{
    const Pairs pairs{{1, "one"}, {4294967295, "far"}};
    std::string text = "abcd";

    EXPECT_FALSE(replaceParaWithBraceValue(text, 2, 0, 4, pairs));
    EXPECT_FALSE(replaceParaWithBraceValue(text, -1, 0, 4, pairs));
    EXPECT_FALSE(replaceParaWithBraceValue(text, 1, 5, 4, pairs));

    EXPECT_EQ(text, "abcd");
}

TEST_F(AlarmSteps, ReplaceTextsOnce)
{
    EXPECT_EQ(relpacestr("a&#44;b&#44;", "&#44;", ","), "a,b,");
    EXPECT_EQ(relpacestr("aaa", "aa", "a"), "aa");
    EXPECT_EQ(relpacestr("aaaa", "a", "aa"), "aaaaaaaa");
    EXPECT_EQ(relpacestr("abc", "b", ""), "ac");
    EXPECT_EQ(relpacestr("aabb", "ab", ""), "ab");
    EXPECT_EQ(relpacestr("", "a", "b"), "");
    EXPECT_EQ(relpacestr("abc", "abcd", "x"), "abc");
}

TEST_F(AlarmSteps, LeaveTheTextWhenThereIsNothingToSearchFor)
{
    EXPECT_EQ(relpacestr("abc", "", "x"), "abc");
    EXPECT_EQ(relpacestr("", "", ""), "");

    EXPECT_EQ(lines().size(), 2u);
    EXPECT_EQ(lines().front(), "warn 0x1002f relpacestr: an empty text cannot be replaced at "
                               "character 0, so the text is left as it is");
}

TEST_F(AlarmSteps, SplitParameters)
{
    EXPECT_THAT(fieldsOf(""), ElementsAre("there"));
    EXPECT_THAT(fieldsOf("a"), ElementsAre("there", "a"));
    EXPECT_THAT(fieldsOf("a,,b"), ElementsAre("there", "a", "", "b"));
    EXPECT_THAT(fieldsOf(",a,"), ElementsAre("there", "", "a", ""));
    EXPECT_THAT(fieldsOf(","), ElementsAre("there", "", ""));
}

TEST_F(AlarmSteps, UnescapeTheCommaFirst)
{
    EXPECT_THAT(fieldsOf("a&#44;b"), ElementsAre("there", "a,b"));
    EXPECT_THAT(fieldsOf("a&#38;b,&"), ElementsAre("there", "a&b", "&"));
    EXPECT_THAT(fieldsOf("&#38;#44;"), ElementsAre("there", "&#44;"));
    EXPECT_THAT(fieldsOf("&#38;#38;"), ElementsAre("there", "&#38;"));
    EXPECT_THAT(fieldsOf("&#44"), ElementsAre("there", "&#44"));
}

TEST_F(AlarmSteps, LeaveFieldsThatWereThereEscaped)
{
    Fields fields{"&#44;"};

    parser().parseAlarmParamList("x", fields);

    EXPECT_THAT(fields, ElementsAre("&#44;", "x"));
}

TEST_F(AlarmSteps, KeepTheEscapesUnderTheirNames)
{
    EXPECT_EQ(CAlarmConfigParser::COMMA, ",");
    EXPECT_EQ(CAlarmConfigParser::ESC_COMMA, "&#44;");
    EXPECT_EQ(CAlarmConfigParser::AMPERSAND, "&");
    EXPECT_EQ(CAlarmConfigParser::ECS_AMPERSAND, "&#38;");
}

TEST_F(AlarmSteps, ReplaceEnumeratedFields)
{
    defineEnums(
        R"({"name":"T","enum_member":[{"value":"b","name":"a"},{"value":"a","name":"z"}]})");
    auto fields = kAbc;
    auto& loaded = parser();
    host.log.clear();

    loaded.replaceAlarmParamEnumValueDesc(7, fields, {{3, "T"}, {1, "T"}, {1, "T"}, {2, "T"}});

    EXPECT_THAT(fields, ElementsAre("a", "z", "c"));  // b to a, then a to z
    EXPECT_THAT(lines(), ElementsAre("warn 0x10014 replaceAlarmParamEnumValueDesc: alarm 7 "
                                     "parameter enume value 3 is out of rang[0, 3]",
                                     "warn 0x10031 replaceAlarmParamEnumValueDesc: not found enum "
                                     "value literal desc of key T_c in map"));
}

}  // namespace
