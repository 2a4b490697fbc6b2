#include "host/startup_error.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/tools/catalogue_findings.h"
#include "tests/unit/tools/small_catalogue.h"
#include "tools/catalogue/expansion.h"
#include "tools/catalogue/finding_kinds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using namespace talvik::test;

/// A catalogue with one thing to find.
struct Row {
    const char* name;
    FindingKind kind;
    std::size_t line;
    std::size_t column;
    std::string definitions;
    std::string enumerations = {};  ///< empty to check without

    /// True when the place is in the enumeration file.
    bool isInEnumerations() const
    {
        return !enumerations.empty() && std::string(name).find("Enumeration") == 0;
    }

    friend std::ostream& operator<<(std::ostream& os, const Row& row) { return os << row.name; }
};

TEST(CatalogueCheck, FindsNothingInAnOrdinaryAlarm)
{
    const auto result = check(alarm(), enumerations("[]"));
    EXPECT_EQ(listed(result.findings), "");
    EXPECT_EQ(result.alarms, 1u);
}

TEST(CatalogueCheck, CountsCharactersAndSkipsAByteOrderMark)
{
    const auto text = "\xEF\xBB\xBF{\"root\": {\"eventDefinition\": {\"param\": [ /* °µ */ 7]}}}";
    const auto result = check(text, "");
    ASSERT_EQ(result.findings.list().size(), 1u);
    EXPECT_EQ(result.findings.list()[0].place.column, 51u);
}

TEST(CatalogueCheck, CountsCharactersOfLongLines)
{
    std::string wide;
    for (int i = 0; i < 1500; ++i) {
        wide += "°";
    }
    const auto result = check(alarm({{"detail", "\"" + wide + "##1\""}}), "");
    ASSERT_EQ(result.findings.list().size(), 1u);
    EXPECT_EQ(result.findings.list()[0].place.line, kDetail);
    EXPECT_EQ(result.findings.list()[0].place.column, 1512u);
}

TEST(CatalogueCheck, CountsLinesThatEndInTwoCharacters)
{
    const auto result = check("{\r\n\"root\": {\r\n\r\"eventDefinition\": {}}}", "");
    ASSERT_EQ(result.findings.list().size(), 1u);
    EXPECT_EQ(result.findings.list()[0].place.line, 4u);
    EXPECT_EQ(result.findings.list()[0].place.column, 20u);
}

TEST(CatalogueCheck, GoesOnBehindADefinitionThatTheModuleStopsAt)
{
    const auto result =
        check(definitions({definition({{"name", "1"}}), definition({{"eventID", "\"0\""}})}), "");
    EXPECT_EQ(codesOf(result), (std::vector<std::string>{"wrong-type", "id-zero"}));
    EXPECT_THAT(result.findings.list()[0].message, testing::HasSubstr("and the 1 behind it"));
}

TEST(CatalogueCheck, TellsThatAnEarlierPlaceholderTakesTheMap)
{
    const auto result = check(alarm({{"detail", "\"##0##01{0:a}\""}}), "");
    EXPECT_EQ(codesOf(result), (std::vector<std::string>{"placeholder-one-digit", "map-shared"}));
}

TEST(CatalogueCheck, PassesOnWhatOnlyTheModuleSees)
{
    const auto result = check(alarm({{"detail", "\"#{a}#-1\""}}), "");
    EXPECT_EQ(codesOf(result), (std::vector<std::string>{"module-warning", "map-without-effect"}));
    EXPECT_THAT(result.findings.list()[0].message,
                testing::HasSubstr("alarm parameter pos -1 is out of range[0, 99]"));
}

TEST(CatalogueCheck, LeavesOutWhatNeedsTheEnumerations)
{
    const auto result =
        check(alarm({{"detail", "\"##00{0:a}\""}, {"paramDesc", "\"0=Unknown\""}}), "");
    EXPECT_EQ(listed(result.findings), "");
}

class CatalogueFinding : public testing::TestWithParam<Row> {};

TEST_P(CatalogueFinding, IsTheOnlyOneAndHasItsPlace)
{
    const auto& row = GetParam();

    const auto result = check(row.definitions, row.enumerations);

    const auto& found = result.findings.list();
    ASSERT_EQ(found.size(), 1u) << listed(result.findings);
    EXPECT_STREQ(found[0].kind.code, row.kind.code) << listed(result.findings);
    EXPECT_EQ(found[0].kind.severity, row.kind.severity);
    EXPECT_EQ(found[0].place.file, row.isInEnumerations() ? "enums.json" : "alarms.json");
    EXPECT_EQ(found[0].place.line, row.line);
    EXPECT_EQ(found[0].place.column, row.column);
    EXPECT_FALSE(found[0].advice.empty());
}

/// The module's own loader agrees about what cannot be loaded at all.
TEST_P(CatalogueFinding, MeansNoCatalogueOnlyWhereTheModuleRefusesIt)
{
    const auto& row = GetParam();
    const TempDir dir;
    const auto first = dir.write("alarms.json", row.definitions);
    const auto second =
        dir.write("enums.json", row.enumerations.empty() ? enumerations("[]") : row.enumerations);
    const std::string code = row.kind.code;

    bool loaded = true;
    try {
        expandAlarm(first, second, 1, "a,b,c");
    } catch (const talvik::StartupError&) {
        loaded = false;
    }

    EXPECT_EQ(loaded, code != "not-json" && code != "missing-element");
}

std::string twice(const Changes& first, const Changes& second)
{
    return definitions({definition(first), definition(second)});
}

/// An OID of so many sub-identifiers, as JSON.
std::string longOid(std::size_t length)
{
    std::string text = "\"4294967295";
    for (std::size_t i = 1; i < length; ++i) {
        text += ".1";
    }
    return text + "\"";
}

const std::string kPorts =
    enumerations("[{\"name\": \"Port\", \"enum_member\": [{\"value\": \"0\", \"name\": \"up\"}]}]");

std::string usingPorts(const std::string& detail = "\"D ##00\"")
{
    return alarm({{"detail", detail}, {"paramDesc", "\"0=Port\""}});
}

const Row kFiles[] = {
    {"NotJson", kind::kNotJson, 2, 3, "{\n  oops}\n"},
    {"NotJsonBehindOtherCharacters", kind::kNotJson, 1, 11, "{\"°C\": 1, µ}"},
    {"NoRoot", kind::kMissingElement, 1, 1, "{\"Root\": {}}"},
    {"NoEventDefinition", kind::kMissingElement, 1, 10, "{\"root\": {}}"},
    {"NoParam", kind::kMissingElement, 1, 30, "{\"root\": {\"eventDefinition\": {}}}"},
    {"RootIsNoObject", kind::kMissingElement, 1, 10, "{\"root\": 1}"},
    {"ParamIsNoArray", kind::kWrongType, 1, 40,
     "{\"root\": {\"eventDefinition\": {\"param\": 1}}}"},
    {"IdIsAJsonNumber", kind::kWrongType, kEventId, 12, alarm({{"eventID", "1"}})},
    {"TextIsNull", kind::kWrongType, kDetail, 11, alarm({{"detail", "null"}})},
    {"ElementIsAString", kind::kWrongType, kElement, 1, definitions({"\"alarm\"", definition()})},
    {"ElementIsNull", kind::kNullElement, kElement, 1, definitions({"null", definition()})},
    {"MemberTwice", kind::kRepeatedMember, kParamDesc, 18,
     alarm({{"paramDesc", "\"\", \"name\": \"M\""}})},
    {"TextBehindTheEnd", kind::kTextAfterEnd, kLines + 3, 1, alarm() + "}"},
    {"UnknownMember", kind::kUnknownMember, kMore, 9, alarm({{"more", "\"\""}})},
};

const Row kIds[] = {
    {"NoId", kind::kMissingId, kElement, 1, alarm({{"eventID", ""}})},
    {"IdWithLetters", kind::kIdNotANumber, kEventId, 12, alarm({{"eventID", "\"12x\""}})},
    {"IdEmpty", kind::kIdNotANumber, kEventId, 12, alarm({{"eventID", "\"\""}})},
    {"IdNegative", kind::kIdNotANumber, kEventId, 12, alarm({{"eventID", "\"-1\""}})},
    {"IdZero", kind::kIdZero, kEventId, 12, alarm({{"eventID", "\"00\""}})},
    {"IdBeyond64Bits", kind::kIdTooLarge, kEventId, 12,
     alarm({{"eventID", "\"18446744073709551616\""}})},
    {"IdBeyondSigned64Bits", kind::kIdTooLarge, kEventId, 12,
     alarm({{"eventID", "\"9223372036854775808\""}})},
    {"IdRepeated", kind::kRepeatedId, kEventId + kLines, 12, twice({}, {{"name", "\"M\""}})},
    {"IdRepeatedWithZeros", kind::kRepeatedId, kEventId + kLines, 12,
     twice({}, {{"eventID", "\"001\""}})},
    {"SameLow32Bits", kind::kIdSame32Bits, kEventId + kLines, 12,
     twice({}, {{"eventID", "\"4294967297\""}})},
    {"SameLow16Bits", kind::kIdSame16Bits, kEventId + kLines, 12,
     twice({}, {{"eventID", "\"65537\""}})},
    {"Low16BitsZero", kind::kIdLow16BitsZero, kEventId, 12, alarm({{"eventID", "\"131072\""}})},
};

const Row kOids[] = {
    {"NoOid", kind::kMissingOid, kElement, 1, alarm({{"alarmOid", ""}})},
    {"OidWithLetters", kind::kInvalidOid, kAlarmOid, 13, alarm({{"alarmOid", "\"1.x\""}})},
    {"OidWithDotInFront", kind::kInvalidOid, kAlarmOid, 13, alarm({{"alarmOid", "\".1\""}})},
    {"OidWithDotBehind", kind::kInvalidOid, kAlarmOid, 13, alarm({{"alarmOid", "\"1.\""}})},
    {"OidBeyond32Bits", kind::kInvalidOid, kAlarmOid, 13, alarm({{"alarmOid", "\"4294967296\""}})},
    {"OidTooLong", kind::kInvalidOid, kAlarmOid, 13, alarm({{"alarmOid", longOid(115)}})},
    {"WholeOid", kind::kWholeOid, kAlarmOid, 13, alarm({{"alarmOid", "\"1.3.6.1.4.1\""}})},
    {"SharedOid", kind::kSharedOid, kAlarmOid + kLines, 13,
     twice({{"alarmOid", "\"7\""}}, {{"eventID", "\"2\""}, {"alarmOid", "\"7\""}})},
};

const Row kTexts[] = {
    {"NoName", kind::kMissingText, kElement, 1, alarm({{"name", ""}})},
    {"NoDetail", kind::kMissingText, kElement, 1, alarm({{"detail", ""}})},
    {"NoLocation", kind::kMissingText, kElement, 1, alarm({{"location", ""}})},
    {"NoSuggestion", kind::kMissingText, kElement, 1, alarm({{"suggestion", ""}})},
    {"TextNone", kind::kTextLooksMissing, kSuggestion, 15, alarm({{"suggestion", "\"None\""}})},
    {"TextDashes", kind::kTextLooksMissing, kLocation, 13, alarm({{"location", "\"--\""}})},
    {"EmptyText", kind::kEmptyText, kName, 9, alarm({{"name", "\"\""}})},
    {"Latin1", kind::kInvalidUtf8, kDetail, 15,
     alarm({{"detail", "\"20 \xB0"
                       "C\""}})},
    {"LoneSurrogate", kind::kInvalidUtf8, kReason, 14, alarm({{"reason", "\"°C\\uDC00\""}})},
    {"LineBreak", kind::kControlCharacter, kDetail, 21, alarm({{"detail", "\"°C\\u00b0x\\n\""}})},
    {"OverlongUtf8", kind::kInvalidUtf8, kName, 10, alarm({{"name", "\"\xC0\x80\""}})},
    {"ControlBeyondAscii", kind::kControlCharacter, kName, 11, alarm({{"name", "\"N\\u0085\""}})},
    {"ControlInTheId", kind::kControlCharacter, kEventId, 14,
     alarm({{"eventID", "\"1\\u0000x\""}})},
    {"ControlInTheOid", kind::kControlCharacter, kAlarmOid, 17,
     alarm({{"alarmOid", "\"1.7\\u0000x\""}})},
    {"ControlInTheParamDesc", kind::kControlCharacter, kParamDesc, 21,
     alarm({{"paramDesc", "\"0=Port\\u0001\""}, {"detail", "\"##00\""}})},
    {"Nul", kind::kControlCharacter, kDetail, 13, alarm({{"detail", "\"D\\u0000E\""}})},
};

const Row kPlaceholders[] = {
    {"AtTheEndOfTheDetail", kind::kPlaceholderAtEnd, kDetail, 14, alarm({{"detail", "\"D ##\""}})},
    {"AtTheEndOfTheLocation", kind::kPlaceholderAtEnd, kLocation, 14,
     alarm({{"location", "\"##\""}})},
    {"OneDigit", kind::kPlaceholderOneDigit, kDetail, 14, alarm({{"detail", "\"° ##1 x\""}})},
    {"OneDigitAtTheEnd", kind::kPlaceholderOneDigit, kDetail, 12, alarm({{"detail", "\"##1\""}})},
    {"OneDigitBehindSurrogates", kind::kPlaceholderOneDigit, kDetail, 25,
     alarm({{"detail", "\"\\uD83D\\uDE00 ##1\""}})},
    {"OneDigitBehindFourBytes", kind::kPlaceholderOneDigit, kDetail, 14,
     alarm({{"detail", "\"\xF0\x9F\x98\x80 ##1\""}})},
    {"OneDigitBehindEscapes", kind::kPlaceholderOneDigit, kDetail, 17,
     alarm({{"detail", "\"\\\"\\/ ##1\""}})},
    {"ThreeDigits", kind::kPlaceholderThreeDigits, kDetail, 12, alarm({{"detail", "\"##012\""}})},
    {"Letters", kind::kPlaceholderNoPosition, kDetail, 12, alarm({{"detail", "\"##ab\""}})},
    {"Sign", kind::kPlaceholderNoPosition, kDetail, 12, alarm({{"detail", "\"##-1\""}})},
    {"Blank", kind::kPlaceholderNoPosition, kDetail, 12, alarm({{"detail", "\"## 1\""}})},
    {"InTheName", kind::kPlaceholderNotFilled, kName, 15, alarm({{"name", "\"Disk ##00\""}})},
    {"InTheReason", kind::kPlaceholderNotFilled, kReason, 12, alarm({{"reason", "\"##00\""}})},
    {"BehindTheDetail", kind::kPlaceholderNotInDetail, kLocation, 19,
     alarm({{"location", "\"##00 ##01 ##01\""}, {"detail", "\"##00\""}})},
};

const Row kMaps[] = {
    {"NotClosed", kind::kMapNotClosed, kDetail, 16, alarm({{"detail", "\"##00{0:a\""}})},
    {"TooFar", kind::kMapWithoutEffect, kDetail, 20, alarm({{"detail", "\"##00 now{0:a}\""}})},
    {"WithoutPlaceholder", kind::kMapWithoutEffect, kDetail, 12,
     alarm({{"detail", "\"{0:a} ##00\""}})},
    {"BehindTheSecondMention", kind::kMapNotFirst, kDetail, 25,
     alarm({{"detail", "\"##00 now ##00{0:a}\""}})},
    {"InTheLocation", kind::kMapNotInDetail, kLocation, 18,
     alarm({{"location", "\"##00{0:a}\""}, {"detail", "\"##00\""}})},
    {"ItemWithoutColon", kind::kMapItem, kDetail, 17, alarm({{"detail", "\"##00{0=a;1:b}\""}})},
    {"ItemWithTwoColons", kind::kMapItem, kDetail, 21, alarm({{"detail", "\"##00{0:a;1:b:c}\""}})},
    {"Empty", kind::kMapWithoutEffect, kDetail, 16, alarm({{"detail", "\"##00{}\""}})},
    {"Nested", kind::kMapNested, kDetail, 16, alarm({{"detail", "\"##00{0:a{1:b}\""}})},
    {"EmptyValue", kind::kMapEmptyValue, kDetail, 17, alarm({{"detail", "\"##00{:none;1:on}\""}})},
    {"ValueWithBlank", kind::kMapBlank, kDetail, 21, alarm({{"detail", "\"##00{0:a; 1:b}\""}})},
    {"ShowsNone", kind::kTextLooksMissing, kDetail, 17,
     alarm({{"detail", "\"##00{0:None;1:b}\""}})},
    {"ShowsDashes", kind::kTextLooksMissing, kDetail, 21,
     alarm({{"detail", "\"##00{0:a;1:--}\""}})},
    {"ShowsValuesAsTheyCome", kind::kMapWithoutEffect, kDetail, 16,
     alarm({{"detail", "\"##00{0:0}\""}})},
    {"BehindAClosingBrace", kind::kMapWithoutEffect, kDetail, 18,
     alarm({{"detail", "\"##00}x{0:a}\""}})},
    {"NotClosedAndFar", kind::kMapNotClosed, kDetail, 22, alarm({{"detail", "\"##00 away {a\""}})},
    {"ValueEndsInAMark", kind::kPlaceholderAtEnd, kDetail, 17,
     alarm({{"detail", "\"##00{0:a##}\""}})},
    {"ValueMakesAMarkAtTheEnd", kind::kPlaceholderAtEnd, kDetail, 17,
     alarm({{"detail", "\"##00{0:a#}#\""}})},
    {"ValueEndsTheLocationInAMark", kind::kPlaceholderAtEnd, kDetail, 17,
     alarm({{"detail", "\"##00{0:a##} b\""}, {"location", "\"##00\""}})},
    {"RepeatedValue", kind::kMapRepeatedValue, kDetail, 21,
     alarm({{"detail", "\"##00{0:a;0:b}\""}})},
    {"ValueWithPlaceholder", kind::kValueWithPlaceholder, kDetail, 17,
     alarm({{"detail", "\"##00{0:a ##01} ##01\""}})},
    {"ValueNamesItself", kind::kSelfReference, kDetail, 17,
     alarm({{"detail", "\"##00{0:a ##00} b\""}})},
    {"BehindAnEnumeration", kind::kMapBehindEnumeration, kDetail, 17,
     usingPorts("\"##00{0:a;9:b}\""), kPorts},
};

const Row kEnumerations[] = {
    {"ItemWithoutSign", kind::kParamDescItem, kParamDesc, 15, alarm({{"paramDesc", "\"2\""}})},
    {"ItemWithoutPosition", kind::kParamDescItem, kParamDesc, 15,
     alarm({{"paramDesc", "\"x=Port\""}})},
    {"ItemWithBlank", kind::kParamDescItem, kParamDesc, 22,
     alarm({{"paramDesc", "\"0=Port, 1=Port\""}, {"detail", "\"##00 ##01\""}})},
    {"PositionTwice", kind::kParamDescRepeated, kParamDesc, 22,
     alarm({{"paramDesc", "\"0=Port,0=Port\""}, {"detail", "\"##00\""}})},
    {"PositionNotUsed", kind::kParamDescUnused, kParamDesc, 15,
     alarm({{"paramDesc", "\"1=Port\""}, {"detail", "\"##00\""}})},
    {"UnknownType", kind::kUnknownEnumeration, kParamDesc, 15,
     alarm({{"paramDesc", "\"0=Fort\""}, {"detail", "\"##00\""}}), enumerations("[]")},
    {"EnumerationNotJson", kind::kNotJson, 1, 1, alarm(), "oops"},
    {"EnumerationWithoutAlarm", kind::kMissingElement, 1, 1, alarm(), "{}"},
    {"EnumerationWithoutParamEnum", kind::kMissingElement, 1, 11, alarm(), "{\"alarm\": {}}"},
    {"EnumerationIsNumber", kind::kWrongType, 1, 27, alarm(), enumerations("[1]")},
    {"EnumerationValueIsNumber", kind::kWrongType, 2, 44, usingPorts(),
     enumerations("[\n{\"name\": \"Port\", \"enum_member\": [{\"value\": 0, \"name\": \"up\"}]}]")},
    {"EnumerationNull", kind::kNullElement, 1, 27, alarm(), enumerations("[null]")},
    {"EnumerationWithoutName", kind::kIncompleteEnumeration, 1, 27, alarm(),
     enumerations("[{\"enum_member\": []}]")},
    {"EnumerationNotUsed", kind::kUnusedEnumeration, 1, 36, alarm(), kPorts},
    {"EnumerationEmpty", kind::kEmptyEnumeration, 1, 36, usingPorts(),
     enumerations("[{\"name\": \"Port\"}]")},
    {"EnumerationValueTwice", kind::kRepeatedLiteral, 4, 11, usingPorts(),
     enumerations("[{\"name\": \"Port\", \"enum_member\": [\n"
                  "{\"value\": \"1\", \"name\": \"up\"},\n"
                  "{\"value\": \"0\", \"name\": \"up\"},\n"
                  "{\"value\": \"1\", \"name\": \"down\"}]}]")},
    {"EnumerationLiteralWithPlaceholder", kind::kValueWithPlaceholder, 2, 27, usingPorts(),
     enumerations("[{\"name\": \"Port\", \"enum_member\": [\n"
                  "{\"value\": \"0\", \"name\": \"up##1\"}]}]")},
    {"EnumerationLiteralEndsInAMark", kind::kPlaceholderAtEnd, 2, 27, usingPorts(),
     enumerations("[{\"name\": \"Port\", \"enum_member\": [\n"
                  "{\"value\": \"0\", \"name\": \"up##\"}]}]")},
    {"EnumerationLiteralNone", kind::kTextLooksMissing, 2, 24, usingPorts(),
     enumerations("[{\"name\": \"Port\", \"enum_member\": [\n"
                  "{\"value\": \"0\", \"name\": \"None\"}]}]")},
    {"EnumerationNameWithNul", kind::kControlCharacter, 1, 41, usingPorts(),
     enumerations("[{\"name\": \"Port\\u0000\", \"enum_member\": [{\"value\": \"0\", "
                  "\"name\": \"up\"}]}]")},
    {"EnumerationValueWithControlCharacter", kind::kControlCharacter, 2, 13, usingPorts(),
     enumerations("[{\"name\": \"Port\", \"enum_member\": [\n"
                  "{\"value\": \"0\\t\", \"name\": \"up\"}]}]")},
    {"EnumerationNameNull", kind::kIncompleteEnumeration, 1, 27, alarm(),
     enumerations("[{\"name\": null, \"enum_member\": [5]}]")},
    {"EnumerationsInAnObject", kind::kWrongType, 1, 26, alarm(), enumerations("{\"a\": 1}")},
    {"EnumerationMembersInAnObject", kind::kWrongType, 1, 58, usingPorts(),
     enumerations("[{\"name\": \"Port\", \"enum_member\":{\"a\": 1}}]")},
};

const auto nameOfRow = [](const auto& row) { return row.param.name; };
TEST(CatalogueCheck, AcceptsTheLongestOid)
{
    EXPECT_EQ(listed(check(alarm({{"alarmOid", longOid(114)}}), "").findings), "");
}

INSTANTIATE_TEST_SUITE_P(Files, CatalogueFinding, testing::ValuesIn(kFiles), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Ids, CatalogueFinding, testing::ValuesIn(kIds), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Oids, CatalogueFinding, testing::ValuesIn(kOids), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Texts, CatalogueFinding, testing::ValuesIn(kTexts), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Placeholders, CatalogueFinding, testing::ValuesIn(kPlaceholders),
                         nameOfRow);
INSTANTIATE_TEST_SUITE_P(Maps, CatalogueFinding, testing::ValuesIn(kMaps), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Enumerations, CatalogueFinding, testing::ValuesIn(kEnumerations),
                         nameOfRow);

}  // namespace
