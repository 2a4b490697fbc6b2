#include "tests/unit/alarmconfig/alarm_catalogue_kit.h"

#include <gmock/gmock.h>

#include <climits>

namespace {

using namespace talvik::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr int kNoPosition = 0x100400F;

class AlarmLookUp : public AlarmCatalogueTest {
protected:
    AlarmInfo infoAlone(unsigned long long id, const std::string& params)
    {
        parser();
        host.log.clear();
        return infoOf(id, params);
    }

    static void expectUntouched(const AlarmInfo& info)
    {
        EXPECT_EQ(info.result, -1);
        EXPECT_EQ(info.location, "untouched");
        EXPECT_EQ(info.detail, "untouched");
        EXPECT_EQ(info.id32, 77u);
        EXPECT_EQ(info.name, "untouched");
        EXPECT_EQ(info.suggestion, "untouched");
    }
};

TEST_F(AlarmLookUp, GivesTheOidOfAnAlarm)
{
    defineAlarms(R"({"eventID":"3","alarmOid":"1.3.6.1"})");
    std::string oid;

    EXPECT_EQ(parser().getAlarmOidInfo(3, oid), 0);

    EXPECT_EQ(oid, "1.3.6.1");
}

TEST_F(AlarmLookUp, RefusesEveryIdOfAnEmptyCatalogue)
{
    parser();
    host.log.clear();
    std::string oid = "untouched";

    EXPECT_EQ(parser().getAlarmOidInfo(3, oid), -1);
    EXPECT_EQ(parser().getAlarmOidInfo(0, oid), -1);
    expectUntouched(infoOf(3, "a"));

    EXPECT_EQ(oid, "untouched");
    EXPECT_THAT(lines(), ElementsAre("error 0x10015 getAlarmOidInfo: alarm config info is empty.",
                                     "error 0x10015 getAlarmOidInfo: alarm config info is empty.",
                                     "error 0x10015 getAlarmInfo: alarm config info is empty."));
}

TEST_F(AlarmLookUp, RefusesIdZeroAndUnknownIds)
{
    defineAlarms(R"({"alarmOid":"of 0"},{"eventID":"3"})");
    parser();
    host.log.clear();
    std::string oid = "untouched";

    EXPECT_EQ(parser().getAlarmOidInfo(0, oid), -1);
    EXPECT_EQ(parser().getAlarmOidInfo(ULLONG_MAX, oid), -1);
    expectUntouched(infoOf(0, "a"));
    expectUntouched(infoOf(4, "a"));

    EXPECT_EQ(oid, "untouched");
    EXPECT_THAT(lines(),
                ElementsAre("error 0x10014 getAlarmOidInfo: invalid alarm id 0",
                            "warn 0x1001e getAlarmOidInfo: alarm 18446744073709551615 desn't need "
                            "to be parsed.",
                            "error 0x10014 getAlarmInfo: invalid alarm id 0",
                            "warn 0x1001e getAlarmInfo: alarm 4 desn't need to be parsed."));
}

TEST_F(AlarmLookUp, TracesTheCall)
{
    defineAlarm("##00");

    infoAlone(1, "a");

    EXPECT_THAT(host.texts("trace"),
                ElementsAre(StartsWith("enter int CAlarmConfigParser::getAlarmInfo("),
                            StartsWith("leave int CAlarmConfigParser::getAlarmInfo(")));
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(AlarmLookUp, FillsAllThreeTextsFromOneDetail)
{
    defineAlarms(
        R"({"eventID":"8589934599","name":"Disk ##00","location":"Enclosure ##01, slot ##03",
        "detail":"Disk ##00 in enclosure ##01 changed to ##02{0:normal;1:faulty}.",
        "suggestion":"Replace disk ##00."})");

    const auto info = infoAlone(8589934599, "D3,E1,1,7");

    EXPECT_EQ(info.result, 0);
    EXPECT_EQ(info.location, "Enclosure E1, slot 7");
    EXPECT_EQ(info.detail, "Disk D3 in enclosure E1 changed to faulty.");
    EXPECT_EQ(info.suggestion, "Replace disk D3.");
    EXPECT_EQ(info.name, "Disk ##00");
    EXPECT_EQ(info.id32, 7u);
}

TEST_F(AlarmLookUp, ShowsLiteralsInEveryText)
{
    defineAlarm("in ##01", "at ##01", "see ##01", "1=EnclosureKind");
    defineEnums(R"({"name":"EnclosureKind","enum_member":[{"value":"E1","name":"front enclosure"},
        {"value":"--","name":"no enclosure"}]})");

    const auto info = infoAlone(1, "D3,E1");

    EXPECT_EQ(info.detail, "in front enclosure");
    EXPECT_EQ(info.location, "at front enclosure");
    EXPECT_EQ(info.suggestion, "see front enclosure");
    EXPECT_EQ(infoOf(1, "D3,").detail, "in no enclosure");  // empty fields first
}

TEST_F(AlarmLookUp, MapsLiteralsInTheDetail)
{
    defineAlarm("##00{front:FRONT}", "##00", "", "0=Kind");
    defineEnums(R"({"name":"Kind","enum_member":[{"value":"1","name":"front"}]})");

    EXPECT_EQ(infoOf(1, "1").detail, "FRONT");
    EXPECT_EQ(infoOf(1, "1").location, "FRONT");
}

TEST_F(AlarmLookUp, WarnsOfMissingLiteralsAndPositions)
{
    defineAlarm("##00", "", "", "0=Kind,2=Kind");

    EXPECT_EQ(infoAlone(1, "v,w").detail, "v");

    EXPECT_THAT(lines(), ElementsAre("warn 0x10031 replaceAlarmParamEnumValueDesc: not found enum "
                                     "value literal desc of key Kind_v in map",
                                     "warn 0x10014 replaceAlarmParamEnumValueDesc: alarm 1 "
                                     "parameter enume value 2 is out of rang[0, 2]"));
}

TEST_F(AlarmLookUp, LeavesTextsWithoutAnyValueAsTheyAre)
{
    defineAlarm("no values", "##00 ##", "##01{0:x}");

    const auto info = infoAlone(1, "");

    EXPECT_EQ(info.result, 0);
    EXPECT_EQ(info.detail, "no values");
    EXPECT_EQ(info.location, "##00 ##");
    EXPECT_EQ(info.suggestion, "##01{0:x}");
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(AlarmLookUp, ShowsDashesForValuesThatTheDetailMissesOnly)
{
    defineAlarm("##00", "##00", "##01");

    const auto info = infoOf(1, "");

    EXPECT_EQ(info.detail, "--");
    EXPECT_EQ(info.location, "--");
    EXPECT_EQ(info.suggestion, "None");
}

TEST_F(AlarmLookUp, ShowsDashesForEmptyValues)
{
    defineAlarm("##00|##01|##02");

    EXPECT_EQ(infoOf(1, "a,,b").detail, "a|--|b");
    EXPECT_EQ(infoOf(1, "a,b,").detail, "a|b|--");
    EXPECT_EQ(infoOf(1, ",,").detail, "--|--|--");
}

TEST_F(AlarmLookUp, TellsPositionsOneBeyondFromFurtherOnes)
{
    defineAlarm("##03", "##03", "##03");
    const auto one = infoOf(1, "a,b,c");
    EXPECT_EQ(one.detail, "--");
    EXPECT_EQ(one.location, "--");
    EXPECT_EQ(one.suggestion, "--");

    CAlarmConfigParser::destroy();
    defineAlarm("##05", "##05", "##05");
    const auto further = infoOf(1, "a,b,c");
    EXPECT_EQ(further.detail, "None");
    EXPECT_EQ(further.location, "None");
    EXPECT_EQ(further.suggestion, "None");

    CAlarmConfigParser::destroy();
    defineAlarm("##03", "##05", "##05 ##03");
    EXPECT_EQ(infoOf(1, "a,b,c").location, "None");
    EXPECT_EQ(infoOf(1, "a,b,c").suggestion, "None --");
}

TEST_F(AlarmLookUp, UnescapesValues)
{
    defineAlarm("##00|##01|##02");

    EXPECT_EQ(infoOf(1, "a&#44;b,&#38;#44;,&#38;").detail, "a,b|&#44;|&");
}

TEST_F(AlarmLookUp, KeepsValueMapsOutsideTheDetail)
{
    defineAlarm("##00{1:on}{gone}", "##00{1:on}", "{kept}");

    const auto info = infoOf(1, "1");

    EXPECT_EQ(info.detail, "on");
    EXPECT_EQ(info.location, "on{1:on}");
    EXPECT_EQ(info.suggestion, "{kept}");
}

TEST_F(AlarmLookUp, ReadsPositionsTwiceInTwoWays)
{
    // A blank is no digit where pairs are made and is skipped where texts are filled.
    defineAlarm("## 1{a:x;b:y}", "##00");

    const auto info = infoOf(1, "a,b");

    EXPECT_EQ(info.detail, "b");
    EXPECT_EQ(info.location, "x");
}

TEST_F(AlarmLookUp, StopsPairsAndBracesAtAnOpenBrace)
{
    defineAlarm("##01 ##00{a:x", "##00", "##01");

    const auto info = infoAlone(1, "a,b");

    EXPECT_EQ(info.result, 0);
    EXPECT_EQ(info.detail, "None --{a:x");
    EXPECT_EQ(info.location, "--");
    EXPECT_EQ(info.suggestion, "None");
    EXPECT_THAT(lines("debug"),
                ElementsAre("debug 0xffff parserParmeterByDetail: parserParmeterByDetail error",
                            "debug 0xffff replaceBraceWithEmptyString: "
                            "replaceBraceWithEmptyString error"));
}

TEST_F(AlarmLookUp, FailsOnALocationThatEndsInAMark)
{
    defineAlarm("##00", "here ##", "wait");

    const auto info = infoAlone(1, "a,b");

    EXPECT_EQ(info.result, kNoPosition);
    EXPECT_EQ(info.id32, 1u);
    EXPECT_EQ(info.location, "untouched");
    EXPECT_EQ(info.detail, "untouched");
    EXPECT_EQ(info.suggestion, "untouched");
    EXPECT_EQ(info.name, "untouched");
    EXPECT_THAT(lines(), ElementsAre("error 0x10015 replaceAlarmParamInfo: no alarm parameter pos",
                                     "error 0x1002e getAlarmInfo: parse alarm location here ## "
                                     "using parameter a,b failed. parsed location is untouched."));
}

TEST_F(AlarmLookUp, FailsOnADetailThatEndsInAMark)
{
    defineAlarm("##00{a:x}##", "at ##00", "wait");

    const auto info = infoAlone(1, "a");

    EXPECT_EQ(info.result, kNoPosition);
    EXPECT_EQ(info.location, "at x");
    EXPECT_EQ(info.detail, "untouched");
    EXPECT_EQ(info.suggestion, "untouched");
    EXPECT_EQ(info.name, "untouched");
    EXPECT_THAT(lines(), ElementsAre("error 0x10015 replaceAlarmParamInfo: no alarm parameter pos",
                                     "error 0x1002e getAlarmInfo: parse alarm detail ##00{a:x}## "
                                     "using parameter a failed, parsed detail is untouched."));
}

TEST_F(AlarmLookUp, FailsOnASuggestionThatEndsInAMark)
{
    defineAlarm("##00", "at ##00", "wait##");

    const auto info = infoAlone(1, "a");

    EXPECT_EQ(info.result, kNoPosition);
    EXPECT_EQ(info.location, "at a");
    EXPECT_EQ(info.detail, "a");
    EXPECT_EQ(info.suggestion, "untouched");
    EXPECT_EQ(info.name, "untouched");
    EXPECT_THAT(lines(), ElementsAre("error 0x10015 replaceAlarmParamInfo: no alarm parameter pos",
                                     "error 0x1002e getAlarmInfo: parse alarm suggestion wait## "
                                     "using parameter a failed, parsed detail is untouched."));
}

TEST_F(AlarmLookUp, UnlocksAfterEveryFailure)
{
    defineAlarm("##00", "##");

    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(infoOf(1, "a").result, kNoPosition);
        EXPECT_EQ(infoOf(0, "a").result, -1);
        EXPECT_EQ(infoOf(2, "a").result, -1);
        EXPECT_EQ(oidOf(0), "untouched");
        EXPECT_EQ(oidOf(2), "untouched");
    }
    EXPECT_EQ(oidOf(1), "None");
}

TEST(AlarmNumbers, ReduceIdsToSixteenBits)
{
    const std::pair<unsigned long long, unsigned> rows[] = {
        {0, 0},
        {1, 1},
        {65535, 65535},
        {65536, 0},
        {65537, 1},
        {0xABCD00000000, 0},
        {507010006, 507010006 % 65536},
        {ULLONG_MAX, 65535},
    };
    for (const auto& [id, expected] : rows) {
        unsigned out = 77;
        CAlarmConfigParser::resolveAlarmId(id, out);
        EXPECT_EQ(out, expected) << id;
    }
}

TEST(AlarmNumbers, MapLevelsToSeverities)
{
    const std::pair<int, int> rows[] = {{2, 5}, {3, 4},  {4, 3},       {5, 2},
                                        {6, 1}, {7, 1},  {0, 4},       {1, 4},
                                        {8, 4}, {-1, 4}, {INT_MAX, 4}, {INT_MIN, 4}};
    for (const auto& [level, severity] : rows) {
        EXPECT_EQ(CAlarmConfigParser::converToQ7400AlarmLevel(level), severity) << level;
    }
}

}  // namespace
