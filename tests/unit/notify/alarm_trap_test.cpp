#include "tests/unit/notify/notify_kit.h"

#include "platform/basic_info.h"

#include <gmock/gmock.h>

namespace {

using namespace talvik::test;

constexpr unsigned kInteger = 2;
constexpr unsigned kOctets = 4;
constexpr unsigned kGauge = 66;
constexpr unsigned kCounter64 = 70;

/// One kind of alarm and what sets its trap apart.
struct Kind {
    const char* name;
    AlarmCells cells;
    const char* faultType;
    const char* category;
    long time;

    friend std::ostream& operator<<(std::ostream& os, const Kind& row) { return os << row.name; }
};

class AlarmTrap : public NotifyTest, public testing::WithParamInterface<Kind> {
protected:
    static std::vector<BindingFacts> expected(const std::string& base, const std::string& time)
    {
        const auto oid = [&](const char* end) { return base + end; };
        return {{oid(".1.0"), kOctets, "NODE-1"},
                {oid(".2.0"), kOctets, "Enclosure E1"},
                {oid(".3.0"), kOctets, "Replace D3."},
                {oid(".4.0"), kOctets, "Disk failed"},
                {oid(".5.0"), kInteger, GetParam().faultType},
                {oid(".6.0"), kInteger, "4"},
                {oid(".7.0"), kGauge, "13172737"},
                {oid(".8.0"), kOctets, time},
                {oid(".9.0"), kGauge, "42"},
                {oid(".10.0"), kOctets, "Disk D3 failed."},
                {oid(".11.0"), kInteger, GetParam().category},
                {oid(".12.0"), kCounter64, "64437682177"},
                {oid(".13.0"), kInteger, "812"},
                {oid(".14.0"), kOctets, "SN-21023"}};
    }
};

TEST_P(AlarmTrap, HasFourteenBindingsInOrder)
{
    Bindings bindings;

    ASSERT_EQ(construct(GetParam().cells, bindings), 0);

    EXPECT_EQ(bindings.facts(),
              expected("1.3.6.1.4.1.99999.2.91.10.3.1.1", octetsOfTime(GetParam().time)));
}

TEST_P(AlarmTrap, OfTheOidBasedHandlerHasAnotherBaseAndTimeAsText)
{
    Bindings bindings;

    ASSERT_EQ(oidBased.constructAlarmTrapVb(*GetParam().cells.record(), bindings.vbs), 0);

    EXPECT_EQ(bindings.facts(),
              expected("1.3.6.1.4.1.99999.2.251.20.1.3", textOfTime(GetParam().time)));
    EXPECT_EQ(host.count("convertTime2DateTime"), 0u);
}

const Kind kKinds[] = {
    {"Fault", AlarmCells(), "2", "1", 1000},
    {"ClearByTagSix", AlarmCells().wide(6, 3000).wide(5, 2000), "2", "2", 3000},
    {"ClearByTagFive", AlarmCells().wide(5, 2000), "2", "2", 2000},
    {"Event", AlarmCells().identifiedBy(kEventRecord).number(73, 1), "3", "3", 1000},
};

INSTANTIATE_TEST_SUITE_P(Kinds, AlarmTrap, testing::ValuesIn(kKinds),
                         [](const auto& row) { return row.param.name; });

class AlarmTrapValues : public NotifyTest {};

TEST_F(AlarmTrapValues, NumbersAtTheirLimits)
{
    Bindings bindings;
    CSNMPBasicImpl::device_type = -1;

    ASSERT_EQ(
        construct(AlarmCells().number(3, 4294967295u).wide(4, 9223372036854775807u), bindings), 0);

    EXPECT_EQ(bindings.value(9), "4294967295");
    EXPECT_EQ(bindings.value(8), octetsOfTime(9223372036854775807));
    EXPECT_EQ(bindings.value(13), "-1");
}

TEST_F(AlarmTrapValues, AnAlarmIdOfAllBitsIsKeptInBothHalves)
{
    CAlarmConfigParser::destroy();
    defineAlarms(R"({"eventID":"9223372036854775807","name":"n"})");
    Bindings bindings;

    ASSERT_EQ(construct(AlarmCells().wide(1, 9223372036854775807u), bindings), 0);

    EXPECT_EQ(bindings.value(7), "4294967295");
    EXPECT_EQ(bindings.value(12), "9223372036854775807");
}

TEST_F(AlarmTrapValues, LevelsAreThoseOfTheManagementSystem)
{
    const std::pair<unsigned, const char*> levels[] = {{2, "5"}, {3, "4"}, {4, "3"},
                                                       {5, "2"}, {6, "1"}, {7, "1"},
                                                       {8, "4"}, {0, "4"}, {4294967295u, "4"}};
    for (const auto& [level, shown] : levels) {
        Bindings bindings;
        ASSERT_EQ(construct(AlarmCells().number(2, level), bindings), 0);
        EXPECT_EQ(bindings.value(6), shown) << level;
    }
}

TEST_F(AlarmTrapValues, ASerialNumberAndALevelOfMoreThan32BitsAreCut)
{
    Bindings bindings;

    ASSERT_EQ(construct(AlarmCells().wide(3, 0x500000007).wide(2, 0x500000002), bindings), 0);

    EXPECT_EQ(bindings.value(9), "7");
    EXPECT_EQ(bindings.value(6), "5");
}

TEST_F(AlarmTrapValues, WithoutANodeCodeTheTextIsEmpty)
{
    host.nodeCode.reset();
    Bindings bindings;

    ASSERT_EQ(construct(AlarmCells(), bindings), 0);

    EXPECT_EQ(bindings.facts()[0],
              (BindingFacts{"1.3.6.1.4.1.99999.2.91.10.3.1.1.1.0", kOctets, ""}));
}

TEST_F(AlarmTrapValues, TheNodeCodeIsAskedForWithEachAlarm)
{
    Bindings before;
    Bindings after;
    construct(AlarmCells(), before);
    host.nodeCode = "NODE-2";
    construct(AlarmCells(), after);

    EXPECT_EQ(before.value(1), "NODE-1");
    EXPECT_EQ(after.value(1), "NODE-2");
    EXPECT_EQ(host.count("getNodeCode"), 2u);
}

TEST_F(AlarmTrapValues, TextsKeepEveryByte)
{
    Bindings bindings;

    ASSERT_EQ(construct(AlarmCells().text(8, "\xC3\xA4\n\x01,"), bindings), 0);

    EXPECT_EQ(bindings.value(10), "Disk \xC3\xA4\n\x01 failed.");
    EXPECT_EQ(bindings.value(2), "Enclosure --");
}

TEST_F(AlarmTrapValues, TheParameterTextEndsAtItsFirstNul)
{
    Bindings bindings;

    ASSERT_EQ(construct(AlarmCells().text(8, std::string("D9\0,E9", 6)), bindings), 0);

    EXPECT_EQ(bindings.value(10), "Disk D9 failed.");
}

TEST_F(AlarmTrapValues, ReadsTheTimesOfAClearAt64BitsButItsCategoryAt32)
{
    const std::uint64_t highOnly = 0x100000000;
    Bindings fault;
    Bindings clear;

    ASSERT_EQ(construct(AlarmCells().wide(6, highOnly).wide(5, highOnly), fault), 0);
    ASSERT_EQ(construct(AlarmCells().wide(6, highOnly).wide(5, 2000), clear), 0);

    EXPECT_EQ(fault.value(11), "1");
    EXPECT_EQ(fault.value(8), octetsOfTime(1000));
    EXPECT_EQ(clear.value(11), "2");
    EXPECT_EQ(clear.value(8), octetsOfTime(0x100000000));
}

TEST_F(AlarmTrapValues, TimesOf32BitsAreTakenAsTheyAre)
{
    Bindings bindings;

    ASSERT_EQ(construct(AlarmCells().number(4, 4294967295u), bindings), 0);

    EXPECT_EQ(bindings.value(8), octetsOfTime(4294967295));
}

TEST_F(AlarmTrapValues, TimesBeyondTheSignedOnesWrap)
{
    Bindings bindings;

    ASSERT_EQ(construct(AlarmCells().wide(4, 0xFFFFFFFFFFFFFFFF), bindings), 0);

    EXPECT_EQ(bindings.value(8), octetsOfTime(-1));
}

TEST_F(AlarmTrapValues, FurtherCellsAreIgnored)
{
    Bindings bindings;

    ASSERT_EQ(construct(AlarmCells().text(7, "x").text(73, "x").text(9, "x"), bindings), 0);

    EXPECT_EQ(bindings.value(11), "1");
}

TEST_F(AlarmTrapValues, EachCallMakesANewArray)
{
    Bindings first;
    Bindings second;

    construct(AlarmCells(), first);
    construct(AlarmCells(), second);

    EXPECT_NE(first.vbs, second.vbs);
    EXPECT_EQ(handler.getTrapVbLen(), 14);
    EXPECT_EQ(oidBased.getTrapVbLen(), 14);
}

}  // namespace
