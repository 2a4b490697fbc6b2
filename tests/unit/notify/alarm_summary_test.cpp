#include "tests/unit/notify/notify_kit.h"

#include "platform/basic_info.h"

#include <gmock/gmock.h>

namespace {

using namespace talvik::test;
using testing::ElementsAre;

constexpr const char* kStart = "warn 0x1002e dump_alarm_info: the content of alarm is \n";

class AlarmSummary : public NotifyTest {};

TEST_F(AlarmSummary, ShowsEveryBindingOfATrap)
{
    Bindings bindings;

    ASSERT_EQ(construct(AlarmCells(), bindings), 0);

    const std::string expected = std::string(kStart) +
                                 "ReportingAlarmNodeCode      --- NODE-1\n"
                                 "ReportingAlarmLocationInfo  --- Enclosure E1\n"
                                 "ReportingAlarmRestoreAdvice --- Replace D3.\n"
                                 "ReportingAlarmFaultTitle    --- Disk failed\n"
                                 "ReportingAlarmFaultType     --- 2\n"
                                 "ReportingAlarmFaultLevel    --- 4\n"
                                 "ReportingAlarmAlarmID       --- 13172737\n"
                                 "ReportingAlarmFaultTime     --- second 1000\n"
                                 "ReportingAlarmSerialNo      --- 42\n"
                                 "ReportingAlarmAdditionInfo  --- Disk D3 failed.\n"
                                 "ReportingAlarmFaultCategory --- 1\n"
                                 "ReportingAlarmLocationAlmID --- 64437682177\n"
                                 "ReportingAlarmProductModel  --- 812\n"
                                 "ReportingAlarmProductSN     --- SN-21023\n";
    EXPECT_THAT(lines(), ElementsAre(expected));
}

TEST_F(AlarmSummary, ShowsTheSameTimeForBothHandlers)
{
    Bindings bindings;

    ASSERT_EQ(oidBased.constructAlarmTrapVb(*AlarmCells().record(), bindings.vbs), 0);

    EXPECT_NE(lines().at(0).find("ReportingAlarmFaultTime     --- second 1000\n"),
              std::string::npos);
}

TEST_F(AlarmSummary, SaysUnknownForWhatIsNotThere)
{
    const char* summary[14] = {};

    handler.dump_alarm_info(summary);

    const std::string expected = std::string(kStart) + "ReportingAlarmNodeCode      --- Unknown\n"
                                                       "ReportingAlarmLocationInfo  --- Unknown\n"
                                                       "ReportingAlarmRestoreAdvice --- Unknown\n"
                                                       "ReportingAlarmFaultTitle    --- Unknown\n"
                                                       "ReportingAlarmFaultType     --- Unknown\n"
                                                       "ReportingAlarmFaultLevel    --- Unknown\n"
                                                       "ReportingAlarmAlarmID       --- Unknown\n"
                                                       "ReportingAlarmFaultTime     --- Unknown\n"
                                                       "ReportingAlarmSerialNo      --- Unknown\n"
                                                       "ReportingAlarmAdditionInfo  --- Unknown\n"
                                                       "ReportingAlarmFaultCategory --- Unknown\n"
                                                       "ReportingAlarmLocationAlmID --- Unknown\n"
                                                       "ReportingAlarmProductModel  --- Unknown\n"
                                                       "ReportingAlarmProductSN     --- Unknown\n";
    EXPECT_THAT(lines(), ElementsAre(expected));
    EXPECT_THAT(summary, testing::Each(testing::StrEq("Unknown")));
}

TEST_F(AlarmSummary, KeepsTheSlotsThatAreThere)
{
    const char* const text = "";
    const char* const format = "100 %s %n";
    const char* summary[14] = {};
    summary[0] = text;
    summary[13] = format;

    handler.dump_alarm_info(summary);

    EXPECT_EQ(summary[0], text);
    EXPECT_EQ(summary[13], format);
    EXPECT_STREQ(summary[1], "Unknown");
    const auto line = lines().at(0);
    EXPECT_NE(line.find("ReportingAlarmNodeCode      --- \nReportingAlarmLocationInfo"),
              std::string::npos);
    EXPECT_NE(line.find("ReportingAlarmProductSN     --- 100 %s %n\n"), std::string::npos);
}

TEST_F(AlarmSummary, ShowsOctetsThatCannotBePrintedInHexadecimal)
{
    CSNMPBasicImpl::product_sn = "\x01";
    Bindings bindings;

    ASSERT_EQ(construct(AlarmCells(), bindings), 0);

    EXPECT_NE(lines().at(0).find("ReportingAlarmProductSN     ---   01 "), std::string::npos);
}

/// The filling operations on their own: which elements and slots each sets.
class AlarmFilling : public NotifyTest {
protected:
    ~AlarmFilling() override { delete[] vbs; }

    /// Numbers of the bindings that have a value.
    std::vector<int> set() const
    {
        std::vector<int> found;
        for (int i = 0; i < 14; ++i) {
            const bool hasValue = vbs[i].get_syntax() != sNMP_SYNTAX_NULL;
            EXPECT_EQ(hasValue, vbs[i].valid()) << i;
            EXPECT_EQ(hasValue, summary[i] != nullptr) << i;
            if (hasValue) {
                found.push_back(i + 1);
                EXPECT_EQ(vbs[i].get_printable_oid(), "1.3.9." + std::to_string(i + 1) + ".0");
            }
        }
        return found;
    }

    /// That each slot of a set binding borrows that binding's text.
    void expectBorrowedTexts() const
    {
        for (int i = 0; i < 14; ++i) {
            if (summary[i] != nullptr) {
                EXPECT_EQ(summary[i], vbs[i].get_printable_value()) << i;
            }
        }
    }

    Agentpp::Vbx* vbs = new Agentpp::Vbx[14];
    const char* summary[14] = {};
    Snmp_pp::Oid base{"1.3.9"};
    std::string first = "first";
    std::string second = "second";
};

TEST_F(AlarmFilling, OfTheNodeCode)
{
    handler.fileAlarmTrapVbNodecode(vbs, summary, base, first, second);

    EXPECT_THAT(set(), ElementsAre(1, 2, 3));
    expectBorrowedTexts();
    EXPECT_STREQ(summary[0], "NODE-1");
    EXPECT_STREQ(summary[1], "first");
    EXPECT_STREQ(summary[2], "second");
}

TEST_F(AlarmFilling, OfTheTitle)
{
    handler.fileAlarmTrapVbTitle(vbs, summary, base, first, 4294967291u);

    EXPECT_THAT(set(), ElementsAre(4, 6));
    expectBorrowedTexts();
    EXPECT_STREQ(summary[3], "first");
    EXPECT_STREQ(summary[5], "-5");
    EXPECT_EQ(vbs[5].get_syntax(), 2u);
}

TEST_F(AlarmFilling, OfTheAlarmId)
{
    handler.fileAlarmTrapVbAlarmId(vbs, summary, base, 4294967295u);

    EXPECT_THAT(set(), ElementsAre(7));
    expectBorrowedTexts();
    EXPECT_STREQ(summary[6], "4294967295");
}

TEST_F(AlarmFilling, OfTheTimeShowsTheTextWhateverTheBindingCarries)
{
    Snmp_pp::OctetStr value("\x07\xEA");
    Snmp_pp::OctetStr text("noon");

    handler.fileAlarmTrapVbTime(vbs, summary, base, value, text);

    EXPECT_THAT(set(), ElementsAre(8));
    EXPECT_EQ(factsOf(vbs[7]).value, "\x07\xEA");
    EXPECT_EQ(summary[7], text.get_printable());
    value = "changed";
    EXPECT_EQ(factsOf(vbs[7]).value, "\x07\xEA");
}

TEST_F(AlarmFilling, OfTheAddition)
{
    handler.fileAlarmTrapVbAddition(vbs, summary, base, 4294967295u, first);

    EXPECT_THAT(set(), ElementsAre(9, 10));
    expectBorrowedTexts();
    EXPECT_STREQ(summary[8], "4294967295");
    EXPECT_STREQ(summary[9], "first");
}

TEST_F(AlarmFilling, OfTheCategory)
{
    handler.fileAlarmTrapVbAlarmCate(vbs, summary, base, 1, 0x100000002);

    EXPECT_THAT(set(), ElementsAre(5, 11, 12, 13, 14));
    expectBorrowedTexts();
    EXPECT_STREQ(summary[4], "2");
    EXPECT_STREQ(summary[10], "1");
    EXPECT_STREQ(summary[11], "4294967298");
}

TEST_F(AlarmFilling, OfEveryCategoryFoldsAllButEventsTogether)
{
    const std::pair<unsigned, const char*> types[] = {
        {0, "2"}, {1, "2"}, {2, "2"}, {3, "3"}, {4, "2"}};
    for (const auto& [category, type] : types) {
        handler.fileAlarmTrapVbAlarmCate(vbs, summary, base, category, 1);
        EXPECT_STREQ(summary[4], type) << category;
        EXPECT_EQ(summary[10], std::to_string(category));
    }
}

TEST_F(AlarmFilling, ReplacesWhatABindingHeldAndKeepsTheBase)
{
    vbs[3].set_oid("1.2.3");
    vbs[3].set_value(77);

    handler.fileAlarmTrapVbTitle(vbs, summary, base, first, 1);
    handler.fileAlarmTrapVbTitle(vbs, summary, base, second, 2);

    EXPECT_EQ(factsOf(vbs[3]), (BindingFacts{"1.3.9.4.0", 4, "second"}));
    EXPECT_STREQ(base.get_printable(), "1.3.9");
}

}  // namespace
