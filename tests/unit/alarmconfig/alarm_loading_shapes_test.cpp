// What shapes of the two files, and failures beside them, do to loading.

#include "framework/kel_exception.h"
#include "tests/support/throw_text.h"
#include "tests/unit/alarmconfig/alarm_catalogue_kit.h"

#include <gmock/gmock.h>

#include <new>

namespace {

using namespace talvik::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

class AlarmLoadingShapes : public AlarmCatalogueTest {
protected:
    static Pairs positionsIn(const char* paramDesc)
    {
        Pairs pairs;
        EXPECT_EQ(parser().parseAlarmParamEnumDescPair(paramDesc, pairs), 0);
        return pairs;
    }

    static std::string literalOf(const std::string& type, const std::string& value)
    {
        Fields fields{value};
        parser().replaceAlarmParamEnumValueDesc(1, fields, {{0, type}});
        return fields.front();
    }

    /// Loads `text` as the enumeration file of a parser that had none; returns the result.
    int loadEnums(const std::string& text)
    {
        CAlarmConfigParser::destroy();
        defineEnums("");
        parser();
        folder.write("enums.json", text);
        host.log.clear();
        std::string path = "enums.json";
        return parser().parseAlarmParamEnumDesc(path);
    }

    Fields entered() const
    {
        Fields found;
        for (const auto& text : host.texts("trace")) {
            if (text.rfind("enter ", 0) == 0) {
                found.push_back(text.substr(6));
            }
        }
        return found;
    }
};

TEST_F(AlarmLoadingShapes, EveryStepIsTracedWithItsSignature)
{
    defineAlarms(R"({"eventID":"1","paramDesc":"0=T"})");
    defineEnums(R"({"name":"T","enum_member":[{"value":"a","name":"A"}]})");

    parser();

    EXPECT_THAT(entered(),
                ElementsAre("void CAlarmConfigParser::init()...",
                            "void CAlarmConfigParser::getAlarmFilePath(std::string&)...",
                            "void CAlarmConfigParser::parse(std::string&)...",
                            "int CAlarmConfigParser::parseAlarmItem(Json::Value)...",
                            StartsWith("int CAlarmConfigParser::parseAlarmParamEnumDescPair("
                                       "const char*, std::vector<std::pair<unsigned int, "),
                            "void CAlarmConfigParser::getAlarmParamEnumFilePath(std::string&)...",
                            "int CAlarmConfigParser::parseAlarmParamEnumDesc(std::string&)...",
                            "int CAlarmConfigParser::parseAlarmParamEnumType(Json::Value)..."));
    EXPECT_EQ(host.texts("trace").size(), 16u);  // each is left, too
    for (const auto& line : host.log) {
        EXPECT_EQ(line.moduleId, 4u) << line;
    }
}

TEST_F(AlarmLoadingShapes, EveryLookUpIsTracedWithItsSignature)
{
    defineAlarm("##00 ##", "", "", "0=T");
    parser();
    host.log.clear();

    oidOf(1);
    infoOf(1, "a");

    EXPECT_THAT(entered(),
                testing::AllOf(testing::Contains("int CAlarmConfigParser::getAlarmOidInfo(long "
                                                 "long unsigned int, std::string&)..."),
                               testing::Contains(StartsWith(
                                   "int CAlarmConfigParser::getAlarmInfo(long long unsigned int, "
                                   "const std::string&, std::string&, std::string&, "))));
    for (const auto& line : host.log) {
        EXPECT_EQ(line.moduleId, 4u) << line;
    }
}

TEST_F(AlarmLoadingShapes, PositionsOfEnumeratedParametersAreReadAsSignedNumbers)
{
    EXPECT_THAT(positionsIn("-1=A"), ElementsAre(Pair(4294967295U, "A")));
    EXPECT_THAT(positionsIn("4294967297=A"), ElementsAre(Pair(1, "A")));  // 32 bits are kept
    EXPECT_THAT(positionsIn("99999999999999999999=A"), ElementsAre(Pair(4294967295U, "A")));
    EXPECT_THAT(positionsIn("-99999999999999999999=A"), ElementsAre(Pair(0, "A")));
    EXPECT_THAT(positionsIn(" +7 =A,010=B,0x9=C"),
                ElementsAre(Pair(7, "A"), Pair(10, "B"), Pair(0, "C")));
}

TEST_F(AlarmLoadingShapes, ANegativePositionIsBeyondAllFields)
{
    defineAlarm("##00", "", "", "-1=T");
    defineEnums(R"({"name":"T","enum_member":[{"value":"a","name":"A"}]})");

    EXPECT_EQ(infoOf(1, "a").detail, "a");

    EXPECT_THAT(lines("warn"), ElementsAre("warn 0x10014 replaceAlarmParamEnumValueDesc: alarm 1 "
                                           "parameter enume value -1 is out of rang[0, 1]"));
}

TEST_F(AlarmLoadingShapes, NoEnumerationsComeFromWhatIsEmptyOrASingleValue)
{
    for (const auto* types : {"null", "{}", "7", "\"text\"", "true", "[]"}) {
        EXPECT_EQ(loadEnums(std::string(R"({"alarm":{"param_enum":)") + types + "}}"), 0) << types;
        EXPECT_THAT(lines(), IsEmpty()) << types;
    }
}

TEST_F(AlarmLoadingShapes, AnObjectOfEnumerationsIsAWrongType)
{
    const std::string type = R"({"name":"T","enum_member":[{"value":"a","name":"A"}]})";

    EXPECT_EQ(loadEnums(R"({"alarm":{"param_enum":{"first":)" + type + "}}}"), -1);

    EXPECT_THAT(lines(), ElementsAre(StartsWith("error 0x1002e parseAlarmParamEnumDesc: parse mib "
                                                "file " +
                                                folder.path() + "/enums.json failed, ")));
    EXPECT_EQ(literalOf("T", "a"), "a");
}

TEST_F(AlarmLoadingShapes, NoValuesComeFromMembersThatAreEmptyOrASingleValue)
{
    const std::string next = R"({"name":"U","enum_member":[{"value":"a","name":"A"}]})";
    for (const auto* members : {"null", "{}", "7", "\"text\"", "true", "[]"}) {
        EXPECT_EQ(loadEnums(R"({"alarm":{"param_enum":[{"name":"T","enum_member":)" +
                            std::string(members) + "}," + next + "]}}"),
                  0)
            << members;
        EXPECT_THAT(lines("error"), IsEmpty()) << members;
        EXPECT_EQ(literalOf("U", "a"), "A") << members;
    }
}

TEST_F(AlarmLoadingShapes, AnObjectOfMembersLosesTheRestOfTheEnumerations)
{
    EXPECT_EQ(loadEnums(R"({"alarm":{"param_enum":[
        {"name":"S","enum_member":[{"value":"a","name":"A"}]},
        {"name":"T","enum_member":{"first":{"value":"a","name":"A"}}},
        {"name":"U","enum_member":[{"value":"a","name":"A"}]}]}})"),
              -1);

    EXPECT_THAT(lines("error"), ElementsAre(StartsWith("error 0x1002e parseAlarmParamEnumDesc: ")));
    EXPECT_EQ(literalOf("S", "a"), "A");
    EXPECT_EQ(literalOf("T", "a"), "a");
    EXPECT_EQ(literalOf("U", "a"), "a");
}

TEST_F(AlarmLoadingShapes, OtherTypesThanObjectsLoseTheRestOfTheEnumerations)
{
    for (const auto* bad :
         {"7", R"("text")", "[]", "true", R"({"name":7})", R"({"name":"T","enum_member":[7]})",
          R"({"name":"T","enum_member":[{"value":"a","name":1}]})"}) {
        EXPECT_EQ(loadEnums(R"({"alarm":{"param_enum":[)" + std::string(bad) +
                            R"(,{"name":"U","enum_member":[{"value":"a","name":"A"}]}]}})"),
                  -1)
            << bad;
        EXPECT_EQ(lines("error").size(), 1u) << bad;
        EXPECT_EQ(literalOf("U", "a"), "a") << bad;
    }
}

/// Only what JsonCpp throws counts as a value of the wrong type.
TEST_F(AlarmLoadingShapes, OtherFailuresWhileStoringAnAlarmAreNotSwallowed)
{
    defineAlarms(R"({"eventID":"1"},{"eventID":"1"},{"eventID":"2","alarmOid":"1.2"})");
    host.onCall("warn", [] { throw std::bad_alloc(); });

    EXPECT_THROW(CAlarmConfigParser::instance(), std::bad_alloc);

    EXPECT_THAT(lines("error"), IsEmpty());
    host.onCall("warn", [] {});
    EXPECT_EQ(oidOf(2), "1.2");
}

TEST_F(AlarmLoadingShapes, OtherFailuresWhileStoringALiteralAreNotSwallowed)
{
    defineEnums(R"({"name":"T","enum_member":[{"value":"a","name":"A"}]})");
    host.onCall("debug", [this] {
        if (host.count("getKELRootEnv") == 2) {  // the second file is being read
            throw std::bad_alloc();
        }
    });

    EXPECT_THROW(CAlarmConfigParser::instance(), std::bad_alloc);

    EXPECT_THAT(lines("error"), IsEmpty());
    host.onCall("debug", [] {});
    EXPECT_EQ(literalOf("T", "a"), "A");
}

TEST_F(AlarmLoadingShapes, ThePathIsTheFullOneAlsoWhereOpeningFails)
{
    auto& loaded = parser();
    std::string alarms = "none/alarms.json";
    std::string enums = "none/enums.json";

    EXPECT_EQ(textOfThrown([&] { loaded.parse(alarms); }),
              "CKEL_Exception: open config file(" + folder.path() + "/none/alarms.json) failed.");
    EXPECT_EQ(textOfThrown([&] { loaded.parseAlarmParamEnumDesc(enums); }),
              "CKEL_Exception: open alarm config file(" + folder.path() +
                  "/none/enums.json) failed.");

    EXPECT_EQ(alarms, folder.path() + "/none/alarms.json");
    EXPECT_EQ(enums, folder.path() + "/none/enums.json");
}

TEST_F(AlarmLoadingShapes, ThePathIsTheFullOneAlsoWhereReadingFails)
{
    auto& loaded = parser();
    folder.write("alarms.json", "{");
    folder.write("enums.json", "{}");
    std::string alarms = "alarms.json";
    std::string enums = "enums.json";

    EXPECT_THROW(loaded.parse(alarms), CKEL_Exception);
    EXPECT_THROW(loaded.parseAlarmParamEnumDesc(enums), CKEL_Exception);

    EXPECT_EQ(alarms, folder.path() + "/alarms.json");
    EXPECT_EQ(enums, folder.path() + "/enums.json");
}

}  // namespace
