#include "tests/support/throw_text.h"
#include "tests/unit/alarmconfig/alarm_catalogue_kit.h"

#include <gmock/gmock.h>
#include <json/value.h>

namespace {

using namespace talvik::test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

class AlarmLoading : public AlarmCatalogueTest {
protected:
    std::string alarmFailure(const std::string& text)
    {
        folder.write("alarms.json", text);
        return failure();
    }

    std::string enumFailure(const std::string& text)
    {
        folder.write("enums.json", text);
        return failure();
    }

    static std::string failure()
    {
        return textOfThrown([] { CAlarmConfigParser::instance(); });
    }

    static Pairs positionsIn(const char* paramDesc)
    {
        Pairs pairs;
        EXPECT_EQ(parser().parseAlarmParamEnumDescPair(paramDesc, pairs), 0);
        return pairs;
    }

    /// The literal of a key, seen through the one step that looks it up.
    static std::string literalOf(const std::string& type, const std::string& value)
    {
        Fields fields{value};
        parser().replaceAlarmParamEnumValueDesc(1, fields, {{0, type}});
        return fields.front();
    }
};

TEST_F(AlarmLoading, AsksForBothFilesAndSaysWhereTheyAre)
{
    parser();

    EXPECT_THAT(host.itemsRead, ElementsAre(Pair("SNMP_CONF", "ALARM_INI_PATH"),
                                            Pair("SNMP_CONF", "ALARM_PARAM_ENUM_PATH")));
    EXPECT_THAT(lines(), ElementsAre("debug 0xffff getAlarmFilePath: file path : alarms.json",
                                     "debug 0xffff getAlarmParamEnumFilePath: file path : "
                                     "enums.json"));
    EXPECT_EQ(host.log.front().moduleId, 4u);
}

TEST_F(AlarmLoading, TracesEachStep)
{
    defineAlarms(R"({"eventID":"1"})");
    parser();

    EXPECT_THAT(host.texts("trace"),
                Contains("enter int CAlarmConfigParser::parseAlarmItem(Json::Value)..."));
    EXPECT_THAT(host.texts("trace"),
                Contains("leave void CAlarmConfigParser::parse(std::string&): OK"));
}

TEST_F(AlarmLoading, TakesAPathThatIsNotConfiguredAsEmpty)
{
    auto& loaded = parser();
    host.deviceItems.clear();
    host.log.clear();
    std::string alarms = "before";
    std::string enums = "before";

    loaded.getAlarmFilePath(alarms);
    loaded.getAlarmParamEnumFilePath(enums);

    EXPECT_EQ(alarms, "");
    EXPECT_EQ(enums, "");
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(AlarmLoading, PutsTheRootBeforeThePathAsItIs)
{
    auto& loaded = parser();
    std::string alarms = "/alarms.json";
    std::string enums = "./enums.json";

    loaded.parse(alarms);
    EXPECT_EQ(loaded.parseAlarmParamEnumDesc(enums), 0);

    EXPECT_EQ(alarms, folder.path() + "//alarms.json");
    EXPECT_EQ(enums, folder.path() + "/./enums.json");
}

TEST_F(AlarmLoading, FailsOnAMissingDefinitionFile)
{
    host.deviceItems[{"SNMP_CONF", "ALARM_INI_PATH"}] = "no.json";

    EXPECT_EQ(failure(), "CKEL_Exception: open config file(" + folder.path() + "/no.json) failed.");
    EXPECT_THAT(host.itemsRead, ElementsAre(Pair("SNMP_CONF", "ALARM_INI_PATH")));
}

TEST_F(AlarmLoading, FailsOnAMissingEnumerationFile)
{
    host.deviceItems[{"SNMP_CONF", "ALARM_PARAM_ENUM_PATH"}] = "no.json";

    EXPECT_EQ(failure(),
              "CKEL_Exception: open alarm config file(" + folder.path() + "/no.json) failed.");
}

TEST_F(AlarmLoading, FailsOnWhatIsNoJson)
{
    const std::string expected = "CKEL_Exception: parse root element failed!";

    EXPECT_EQ(alarmFailure("{\"root\":"), expected);
    EXPECT_EQ(alarmFailure(""), expected);
    EXPECT_EQ(alarmFailure(std::string(5000, '[')), expected);
    defineAlarms("");
    EXPECT_EQ(enumFailure("nothing"), expected);
    host.deviceItems[{"SNMP_CONF", "ALARM_INI_PATH"}] = "";  // the folder itself
    EXPECT_EQ(failure(), expected);
}

TEST_F(AlarmLoading, FailsWithoutTheRootElement)
{
    const std::string expected = "CKEL_Exception: root element is invalid, should be (root).";

    EXPECT_EQ(alarmFailure(R"({"Root":{}})"), expected);
    EXPECT_EQ(alarmFailure("[]"), expected);
    EXPECT_EQ(alarmFailure("null"), expected);
    EXPECT_EQ(alarmFailure("7"), expected);
}

TEST_F(AlarmLoading, FailsWithoutDefinitions)
{
    const std::string expected = "CKEL_Exception: parse eventDefinition element failed!";

    EXPECT_EQ(alarmFailure(R"({"root":{}})"), expected);
    EXPECT_EQ(alarmFailure(R"({"root":null})"), expected);
    EXPECT_EQ(alarmFailure(R"({"root":"text"})"), expected);
    EXPECT_EQ(alarmFailure(R"({"root":{"eventDefinition":{}}})"), expected);
    EXPECT_EQ(alarmFailure(R"({"root":{"eventDefinition":[]}})"), expected);
}

TEST_F(AlarmLoading, FailsWithoutTheAlarmElement)
{
    EXPECT_EQ(enumFailure("{}"), "CKEL_Exception: root element is invalid, should be (alarm).");
    EXPECT_EQ(enumFailure("[]"), "CKEL_Exception: root element is invalid, should be (alarm).");
}

TEST_F(AlarmLoading, FailsWithoutEnumerations)
{
    EXPECT_EQ(enumFailure(R"({"alarm":{}})"), "CKEL_Exception: parse param_enum element failed!");
    EXPECT_EQ(enumFailure(R"({"alarm":3})"), "CKEL_Exception: parse param_enum element failed!");
}

TEST_F(AlarmLoading, AcceptsCommentsAsTheDefaultReaderDoes)
{
    folder.write("alarms.json", "// by hand\n{\"root\":{\"eventDefinition\":{\"param\":[{"
                                "\"eventID\":\"5\",\"alarmOid\":\"1.5\"}]}}} /* end */");

    EXPECT_EQ(oidOf(5), "1.5");
}

TEST_F(AlarmLoading, TakesNoElementsFromWhatIsEmptyOrASingleValue)
{
    for (const auto* param : {"null", "{}", "7", "\"text\""}) {
        CAlarmConfigParser::destroy();
        host.log.clear();
        folder.write("alarms.json",
                     std::string(R"({"root":{"eventDefinition":{"param":)") + param + "}}}");
        EXPECT_EQ(oidOf(1), "untouched") << param;
        EXPECT_THAT(lines("error"),
                    ElementsAre("error 0x10015 getAlarmOidInfo: alarm config info is empty."))
            << param;
    }
}

TEST_F(AlarmLoading, ReadsEveryTextOfADefinition)
{
    defineAlarms(R"({"eventID":"4294967298","name":"n ##00","reason":"r","suggestion":"s ##01",
        "detail":"d","location":"l","alarmOid":"1.3.6","paramDesc":"1=T","other":[1,2]})");
    defineEnums(R"({"name":"T","enum_member":[{"value":"b","name":"bee"}]})");

    const auto info = infoOf(4294967298, "a,b");

    EXPECT_EQ(info.result, 0);
    EXPECT_EQ(info.name, "n ##00");
    EXPECT_EQ(info.suggestion, "s bee");
    EXPECT_EQ(info.detail, "d");
    EXPECT_EQ(info.location, "l");
    EXPECT_EQ(info.id32, 2u);
    EXPECT_EQ(oidOf(4294967298), "1.3.6");
}

TEST_F(AlarmLoading, TakesNoneForMissingTexts)
{
    defineAlarms(R"({"eventID":"9"})");

    const auto info = infoOf(9, "a");

    EXPECT_EQ(info.name, "None");
    EXPECT_EQ(info.suggestion, "None");
    EXPECT_EQ(info.detail, "None");
    EXPECT_EQ(info.location, "None");
    EXPECT_EQ(oidOf(9), "None");
}

TEST_F(AlarmLoading, CutsTextsAtTheirFirstNul)
{
    defineAlarms(R"({"eventID":"9\u00001","name":"ab\u0000c"})");

    EXPECT_EQ(infoOf(9, "").name, "ab");
}

TEST_F(AlarmLoading, StoresADefinitionWithoutIdWhereNoLookUpFindsIt)
{
    defineAlarms(R"({"alarmOid":"1.1"},{"eventID":"x","alarmOid":"1.2"})");

    EXPECT_EQ(oidOf(0), "untouched");
    EXPECT_THAT(lines("warn"),
                ElementsAre("warn 0x10014 parseAlarmItem: repeated alarm 0, so ignore it."));
    EXPECT_THAT(lines("error"), ElementsAre("error 0x10014 getAlarmOidInfo: invalid alarm id 0"));
}

TEST_F(AlarmLoading, ReadsIdsAsSignedNumbers)
{
    defineAlarms(R"({"eventID":"-1","alarmOid":"minus"},{"eventID":" 12x","alarmOid":"twelve"},
        {"eventID":"99999999999999999999","alarmOid":"largest"})");

    EXPECT_EQ(oidOf(18446744073709551615ULL), "minus");
    EXPECT_EQ(oidOf(12), "twelve");
    EXPECT_EQ(oidOf(9223372036854775807ULL), "largest");
}

TEST_F(AlarmLoading, KeepsTheFirstDefinitionOfAnId)
{
    defineAlarms(R"({"eventID":"5","alarmOid":"first"},{"eventID":"05","name":8},
        {"eventID":"6","alarmOid":"other"})");

    EXPECT_EQ(oidOf(5), "first");
    EXPECT_EQ(oidOf(6), "other");  // the repeated one's number is not even looked at
    EXPECT_THAT(lines("warn"),
                ElementsAre("warn 0x10014 parseAlarmItem: repeated alarm 5, so ignore it."));
}

TEST_F(AlarmLoading, SkipsNullElements)
{
    defineAlarms(R"(null,{"eventID":"5","alarmOid":"1.5"},null)");

    EXPECT_EQ(oidOf(5), "1.5");
    EXPECT_EQ(parser().parseAlarmItem(Json::Value()), -1);
    EXPECT_THAT(lines("error"), IsEmpty());
}

TEST_F(AlarmLoading, LosesTheRestAfterAValueOfTheWrongType)
{
    defineAlarms(R"({"eventID":"1","alarmOid":"kept"},{"eventID":2,"alarmOid":"lost"},
        {"eventID":"3","alarmOid":"lost too"})");
    defineEnums(R"({"name":"T","enum_member":[{"value":"0","name":"zero"}]})");

    EXPECT_EQ(oidOf(1), "kept");
    EXPECT_EQ(oidOf(2), "untouched");
    EXPECT_EQ(oidOf(3), "untouched");
    EXPECT_EQ(literalOf("T", "0"), "zero");
    EXPECT_THAT(lines("error"),
                ElementsAre("error 0x1002e parse: parse mib file " + folder.path() +
                            "/alarms.json failed, in Json::Value::asCString(): requires "
                            "stringValue."));
}

TEST_F(AlarmLoading, TakesEveryOtherTypeThanTextAsWrong)
{
    for (const auto* bad :
         {R"({"eventID":null})", R"({"eventID":"2","name":null})", R"({"eventID":"2","reason":1})",
          R"({"eventID":"2","suggestion":[]})", R"({"eventID":"2","detail":{}})",
          R"({"eventID":"2","location":true})", R"({"eventID":"2","alarmOid":1.5})",
          R"({"eventID":"2","paramDesc":0})", "7", R"("text")", "[]", "true"}) {
        CAlarmConfigParser::destroy();
        host.log.clear();
        defineAlarms(std::string(R"({"eventID":"1","alarmOid":"kept"},)") + bad +
                     R"(,{"eventID":"3","alarmOid":"lost"})");
        EXPECT_EQ(oidOf(1), "kept") << bad;
        EXPECT_EQ(oidOf(2), "untouched") << bad;
        EXPECT_EQ(oidOf(3), "untouched") << bad;
        EXPECT_THAT(lines("error"), ElementsAre(StartsWith("error 0x1002e parse: parse mib file ")))
            << bad;
    }
}

TEST_F(AlarmLoading, TakesAnObjectWithMembersForAWrongType)
{
    folder.write("alarms.json", R"({"root":{"eventDefinition":{"param":{"a":1}}}})");

    EXPECT_EQ(oidOf(1), "untouched");
    EXPECT_THAT(lines("error"), Contains(StartsWith("error 0x1002e parse: parse mib file ")));
}

TEST_F(AlarmLoading, SplitsParameterDescriptions)
{
    EXPECT_THAT(positionsIn("1=DiskState,3=PortRole"),
                ElementsAre(Pair(1, "DiskState"), Pair(3, "PortRole")));
    EXPECT_THAT(positionsIn("2=A,,3"), ElementsAre(Pair(2, "A")));
    EXPECT_THAT(positionsIn("x=A"), ElementsAre(Pair(0, "A")));
    EXPECT_THAT(positionsIn("2=A=B"), ElementsAre(Pair(2, "A=B")));
    EXPECT_THAT(positionsIn(",1=B, 2= C ,1=B,"),
                ElementsAre(Pair(1, "B"), Pair(2, " C "), Pair(1, "B")));
    EXPECT_THAT(positionsIn("=A,5="), ElementsAre(Pair(0, "A"), Pair(5, "")));
    EXPECT_THAT(positionsIn("None"), IsEmpty());
    EXPECT_THAT(positionsIn(""), IsEmpty());
}

TEST_F(AlarmLoading, AppendsParameterDescriptions)
{
    Pairs pairs{{7, "there"}};

    parser().parseAlarmParamEnumDescPair("1=A", pairs);

    EXPECT_THAT(pairs, ElementsAre(Pair(7, "there"), Pair(1, "A")));
}

TEST_F(AlarmLoading, RefusesANullParameterDescription)
{
    Pairs pairs;
    auto& loaded = parser();

    EXPECT_EQ(textOfThrown([&] { loaded.parseAlarmParamEnumDescPair(nullptr, pairs); }),
              "CKEL_Exception: Null pointer.");
}

TEST_F(AlarmLoading, GoesOnWithNothingWhenTheCopyFails)
{
    auto& loaded = parser();
    host.log.clear();
    host.memcpyResult = 22;
    Pairs pairs;

    EXPECT_EQ(loaded.parseAlarmParamEnumDescPair("1=A", pairs), 0);

    EXPECT_THAT(pairs, IsEmpty());
    EXPECT_THAT(lines(), ElementsAre("warn 0x1001d parseAlarmParamEnumDescPair: memcpy_s is fail, "
                                     "code=22!"));
}

TEST_F(AlarmLoading, ReadsLiterals)
{
    defineEnums(R"({"name":"PortRole","enum_member":[{"value":"0","name":"host port"},
        {"value":"1","name":"expansion port"}]})");

    EXPECT_EQ(literalOf("PortRole", "0"), "host port");
    EXPECT_EQ(literalOf("PortRole", "1"), "expansion port");
    EXPECT_THAT(lines("debug"),
                testing::IsSupersetOf(
                    {"debug 0xffff parseAlarmParamEnumType: EnumDescKey is (PortRole_0)",
                     "debug 0xffff parseAlarmParamEnumType: EnumDescKey is (PortRole_1)"}));
}

TEST_F(AlarmLoading, KeepsTheFirstLiteralOfAKeyInSilence)
{
    defineEnums(R"({"name":"A","enum_member":[{"value":"B_0","name":"first"}]},
        {"name":"A_B","enum_member":[{"value":"0","name":"second"}]})");

    EXPECT_EQ(literalOf("A_B", "0"), "first");
    EXPECT_THAT(lines("warn"), IsEmpty());
}

TEST_F(AlarmLoading, SkipsTypesAndMembersWithoutNameOrValue)
{
    defineEnums(R"(null,{"name":null,"enum_member":[{"value":"0","name":"no"}]},
        {"enum_member":[{"value":"0","name":"no"}]},{"name":"E"},
        {"name":"T","enum_member":[null,{"value":"1"},{"name":"x"},{"value":null,"name":"x"},
        {"value":"2","name":null},{"value":"3","name":"three"}]})");

    EXPECT_EQ(literalOf("T", "3"), "three");
    EXPECT_EQ(literalOf("T", "2"), "2");
    EXPECT_EQ(literalOf("", "0"), "0");
    EXPECT_THAT(lines("error"), IsEmpty());
    Json::Value nameless;
    nameless["name"] = Json::Value();
    EXPECT_EQ(parser().parseAlarmParamEnumType(Json::Value()), -1);
    EXPECT_EQ(parser().parseAlarmParamEnumType(nameless), -1);
    EXPECT_EQ(parser().parseAlarmParamEnumType(Json::Value(Json::objectValue)), -1);
}

TEST_F(AlarmLoading, LosesTheRestOfTheEnumerationsAfterANumberForAValue)
{
    const std::string path = folder.path() + "/enums.json";
    auto& loaded = parser();
    defineEnums(R"({"name":"T","enum_member":[{"value":"1","name":"one"},
        {"value":0,"name":"zero"},{"value":"2","name":"two"}]},
        {"name":"U","enum_member":[{"value":"1","name":"lost"}]})");
    std::string enums = "enums.json";

    EXPECT_EQ(loaded.parseAlarmParamEnumDesc(enums), -1);

    EXPECT_EQ(literalOf("T", "1"), "one");
    EXPECT_EQ(literalOf("T", "2"), "2");
    EXPECT_EQ(literalOf("U", "1"), "1");
    EXPECT_THAT(lines("error"),
                ElementsAre("error 0x1002e parseAlarmParamEnumDesc: parse mib file " + path +
                            " failed, in Json::Value::asCString(): requires stringValue."));
}

TEST_F(AlarmLoading, GoesOnWithoutTheRestOfTheEnumerations)
{
    defineAlarms(R"({"eventID":"1","alarmOid":"1.1"})");
    defineEnums(R"({"name":5})");

    EXPECT_EQ(oidOf(1), "1.1");
    EXPECT_EQ(lines("error").size(), 1u);
}

}  // namespace
