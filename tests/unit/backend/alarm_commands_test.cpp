#include "backend/alarm_commands.h"

#include "backend/back_end.h"
#include "host/platform/durable_database.h"
#include "host/startup_error.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/alarm_desk.h"
#include "tests/unit/backend/alarm_kit.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <gmock/gmock.h>

namespace {

using namespace talvik::test;
using namespace talvik::backend;
using talvik::DeviceConfigFile;
using talvik::DurableDatabase;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint64_t kShow = 4002;
constexpr std::uint64_t kClear = 4003;
constexpr std::uint64_t kRaise = 4010;
constexpr std::uint64_t kEvent = 4011;
constexpr std::uint64_t kResend = 4012;
constexpr std::uint64_t kSubscribe = 4013;

Bytes answered(std::uint64_t command, const Wire& cells)
{
    return Wire::package(2, 7, 0, Wire::record(command, cells)).bytes();
}

Wire reported()
{
    return Wire().numberCell(1, 5, 8).numberCell(2, 3, 4).textCell(8, "CTE0,B");
}

TEST(AlarmCommands, RaiseAnAlarmAndAnswerItsSerialNumber)
{
    AlarmDesk desk;

    EXPECT_EQ(desk.ask(kRaise, reported()), answered(kRaise, Wire().numberCell(3, 1, 4)));
    EXPECT_EQ(desk.ask(kRaise, reported().numberCell(4, 1234, 8)),
              answered(kRaise, Wire().numberCell(3, 2, 4)));

    const Alarm now{5, 3, kNow, "CTE0,B"};
    const Alarm then{5, 3, 1234, "CTE0,B"};
    EXPECT_THAT(outboxOf(desk.store),
                ElementsAre(faultOf(1, now).octets(), faultOf(2, then).octets()));
    EXPECT_THAT(serialsOf(desk.store), ElementsAre(1, 2));
}

TEST(AlarmCommands, ReportAnEventWithoutMakingItActive)
{
    AlarmDesk desk;

    EXPECT_EQ(desk.ask(kEvent, reported()), answered(kEvent, Wire().numberCell(3, 1, 4)));

    EXPECT_THAT(outboxOf(desk.store),
                ElementsAre(alarmRecordOf(2, 1, {5, 3, kNow, "CTE0,B"}).octets()));
    EXPECT_THAT(serialsOf(desk.store), IsEmpty());
}

TEST(AlarmCommands, TakeTheLargestValues)
{
    AlarmDesk desk;
    const std::string longest(32768, 'p');
    const auto cells = Wire()
                           .numberCell(1, ~std::uint64_t{0}, 8)
                           .numberCell(2, 0xFFFFFFFF, 4)
                           .textCell(8, longest)
                           .numberCell(4, 253402300799, 8);

    EXPECT_EQ(desk.ask(kRaise, cells), answered(kRaise, Wire().numberCell(3, 1, 4)));

    EXPECT_THAT(
        outboxOf(desk.store),
        ElementsAre(faultOf(1, {~std::uint64_t{0}, 0xFFFFFFFF, 253402300799, longest}).octets()));
}

TEST(AlarmCommands, ClearAnAlarmAtTheTimeOfTheRequest)
{
    AlarmDesk desk;
    const auto alarm = alarmOf(5);
    desk.store.raise(alarm);

    EXPECT_EQ(desk.ask(kClear, Wire().numberCell(3, 1, 4).textCell(7, "operator")),
              Wire::refusal(7, 0).bytes());

    EXPECT_EQ(outboxOf(desk.store).back(), alarmRecordOf(8, 1, alarm, kNow).octets());
    EXPECT_EQ(desk.ask(kClear, Wire().numberCell(3, 1, 4).textCell(7, "operator")),
              Wire::refusal(7, 0x1000014).bytes());
}

TEST(AlarmCommands, AnswerHowManyAlarmsWillBeSentAgain)
{
    AlarmDesk desk;
    EXPECT_EQ(desk.ask(kResend, Wire()), answered(kResend, Wire().numberCell(9, 0, 4)));
    desk.store.raise(alarmOf(1));
    desk.store.raise(alarmOf(2));

    EXPECT_EQ(desk.ask(kResend, Wire()), answered(kResend, Wire().numberCell(9, 2, 4)));

    EXPECT_EQ(desk.wakes, 2);
}

TEST(AlarmCommands, DoNotSubscribeWithoutAConnection)
{
    const LoggerCapture log("backend");
    const AlarmDesk desk;

    EXPECT_EQ(desk.ask(kSubscribe, Wire()), Wire::refusal(7, 0x1000015).bytes());

    EXPECT_THAT(log.lines(),
                ElementsAre(HasSubstr("SUBSCRIBE_NOTIFICATIONS came by no connection")));
}

struct BadRequest {
    const char* name;
    std::uint64_t command;
    Wire cells;
    const char* reason;

    friend std::ostream& operator<<(std::ostream& os, const BadRequest& row)
    {
        return os << row.name;
    }
};

class AlarmRequest : public testing::TestWithParam<BadRequest> {};

TEST_P(AlarmRequest, IsRefusedWithALineThatNamesTheCell)
{
    AlarmDesk desk;
    desk.store.raise(alarmOf(1));
    const LoggerCapture log("backend");

    EXPECT_EQ(desk.ask(GetParam().command, GetParam().cells), Wire::refusal(7, 0x1000015).bytes());

    EXPECT_THAT(log.lines(), ElementsAre(AllOf(HasSubstr("is refused: the cell "),
                                               HasSubstr(GetParam().reason))));
    EXPECT_EQ(outboxOf(desk.store).size(), 1U);
    EXPECT_EQ(desk.store.lastSerial(), 1U);
}

Wire withId(const Wire& id)
{
    return Wire().append(id).numberCell(2, 3, 4).textCell(8, "");
}

Wire withLevel(const Wire& level)
{
    return Wire().numberCell(1, 5, 8).append(level).textCell(8, "");
}

Wire withParameters(const Wire& parameters)
{
    return Wire().numberCell(1, 5, 8).numberCell(2, 3, 4).append(parameters);
}

Wire withSerial(const Wire& serial)
{
    return Wire().append(serial).textCell(7, "me");
}

Wire withRequester(const Wire& requester)
{
    return Wire().numberCell(3, 1, 4).append(requester);
}

Wire withStart(const Wire& start)
{
    return Wire().append(start).numberCell(9, 50, 4);
}

Wire withCount(const Wire& count)
{
    return Wire().numberCell(3, 0, 4).append(count);
}

const BadRequest kBadRequests[] = {
    {"NoCells", kRaise, Wire(), "alarm id (tag 1) is missing"},
    {"NoId", kRaise, withId(Wire()), "alarm id (tag 1) is missing"},
    {"IdOfText", kRaise, withId(Wire().textCell(1, "5")),
     "alarm id (tag 1) is of type 2, a number (3) is due"},
    {"IdOfOctets", kRaise, withId(Wire().u16(0x11).u16(1).u8(5)), "alarm id (tag 1) is of type 1"},
    {"IdWithoutBytes", kRaise, withId(Wire().u16(0x13).u16(0)), "alarm id (tag 1) has 0 bytes"},
    {"IdOfThreeBytes", kRaise, withId(Wire().numberCell(1, 5, 3)), "alarm id (tag 1) has 3 bytes"},
    {"IdOfNineBytes", kRaise, withId(Wire().u16(0x13).u16(9).u64(5).u8(0)),
     "alarm id (tag 1) has 9 bytes"},
    {"NegativeId", kRaise, withId(Wire().u16(0x14).u16(2).u16(0xFFFF)),
     "alarm id (tag 1) is negative"},
    {"NoLevel", kRaise, withLevel(Wire()), "level (tag 2) is missing"},
    {"LevelOfText", kRaise, withLevel(Wire().textCell(2, "3")), "level (tag 2) is of type 2"},
    {"LevelTooLarge", kRaise, withLevel(Wire().numberCell(2, std::uint64_t{1} << 32U, 8)),
     "level (tag 2) is 4294967296, at most 4294967295"},
    {"NoParameters", kRaise, withParameters(Wire()), "parameters (tag 8) is missing"},
    {"ParametersAsANumber", kRaise, withParameters(Wire().numberCell(8, 1, 4)),
     "parameters (tag 8) is of type 3, a text (2) is due"},
    {"ParametersTooLong", kRaise, withParameters(Wire().textCell(8, std::string(32769, 'p'))),
     "parameters (tag 8) has 32769 bytes of text, at most 32768"},
    {"ParametersWithoutNul", kRaise, withParameters(Wire().u16(0x82).u16(1).u8('p')),
     "parameters (tag 8) has no NUL at its end"},
    {"ParametersWithNulBeforeTheEnd", kRaise,
     withParameters(Wire().u16(0x82).u16(3).u8('p').u16(0)),
     "parameters (tag 8) has no NUL at its end, or one before"},
    {"TimeOfText", kRaise, reported().textCell(4, "now"), "time (tag 4) is of type 2"},
    {"TimeBeyondTheYear9999", kRaise, reported().numberCell(4, 253402300800, 8),
     "time (tag 4) is 253402300800, at most 253402300799"},
    {"EventWithoutId", kEvent, withId(Wire()), "alarm id (tag 1) is missing"},
    {"EventWithBadTime", kEvent, reported().numberCell(4, 0, 5), "time (tag 4) has 5 bytes"},
    {"ClearingWithoutSerial", kClear, withSerial(Wire()), "serial number (tag 3) is missing"},
    {"ClearingWithSerialTooLarge", kClear,
     withSerial(Wire().numberCell(3, (std::uint64_t{1} << 32U) + 1, 8)),
     "serial number (tag 3) is 4294967297"},
    {"ClearingWithSerialOfText", kClear, withSerial(Wire().textCell(3, "1")),
     "serial number (tag 3) is of type 2"},
    {"ClearingWithoutRequester", kClear, withRequester(Wire()), "requester (tag 7) is missing"},
    {"ClearingWithRequesterAsANumber", kClear, withRequester(Wire().numberCell(7, 1, 4)),
     "requester (tag 7) is of type 3"},
    {"ClearingWithRequesterTooLong", kClear,
     withRequester(Wire().textCell(7, std::string(256, 'r'))),
     "requester (tag 7) has 256 bytes of text, at most 255"},
    {"ShowingWithoutStart", kShow, withStart(Wire()), "serial number (tag 3) is missing"},
    {"ShowingWithStartOfText", kShow, withStart(Wire().textCell(3, "0")),
     "serial number (tag 3) is of type 2"},
    {"ShowingWithNegativeStart", kShow, withStart(Wire().u16(0x34).u16(4).u32(0xFFFFFFFF)),
     "serial number (tag 3) is negative"},
    {"ShowingWithStartTooLarge", kShow, withStart(Wire().numberCell(3, std::uint64_t{1} << 32U, 8)),
     "serial number (tag 3) is 4294967296, at most 4294967295"},
    {"ShowingWithoutCount", kShow, withCount(Wire()), "count (tag 9) is missing"},
    {"ShowingWithCountOfText", kShow, withCount(Wire().textCell(9, "50")),
     "count (tag 9) is of type 2"},
    {"ShowingWithNegativeCount", kShow, withCount(Wire().u16(0x94).u16(1).u8(0xFF)),
     "count (tag 9) is negative"},
    {"ShowingNone", kShow, withCount(Wire().numberCell(9, 0, 4)),
     "count (tag 9) is 0, at least 1 is due"},
    {"ShowingTooMany", kShow, withCount(Wire().numberCell(9, 1001, 4)),
     "count (tag 9) is 1001, at most 1000 is possible"},
};

INSTANTIATE_TEST_SUITE_P(Cells, AlarmRequest, testing::ValuesIn(kBadRequests),
                         [](const auto& row) { return row.param.name; });

class CommandItem : public testing::TestWithParam<std::string> {};

TEST_P(CommandItem, IsNamedWhenTheConfigurationLacksIt)
{
    const TempDir dir;
    std::string items;
    for (const auto* name : {"GET_SYSTEM_WWN", "GET_CURRENT_ALARM", "RAISE_ALARM", "REPORT_EVENT",
                             "CLEAR_ALARM", "RESEND_ALARMS", "SUBSCRIBE_NOTIFICATIONS"}) {
        if (name != GetParam()) {
            items += "<item name='" + std::string(name) + "' value='" +
                     std::to_string(items.size() + 1) + "'/>";
        }
    }
    const auto config = DeviceConfigFile::load(
        dir.write("device.xml", "<device><section name='COMMAND'>" + items +
                                    "</section><section name='SYSTEM'><item name='WWN' "
                                    "value='2100a1b2c3d4e5f6'/></section></device>"));

    try {
        const BackEnd backEnd(config, DurableDatabase::kInMemory);
        FAIL() << "not refused";
    } catch (const talvik::StartupError& error) {
        EXPECT_THAT(error.what(), HasSubstr("\"" + GetParam() + "\""));
    }
}

INSTANTIATE_TEST_SUITE_P(AlarmCommands, CommandItem,
                         testing::Values("GET_CURRENT_ALARM", "RAISE_ALARM", "REPORT_EVENT",
                                         "CLEAR_ALARM", "RESEND_ALARMS", "SUBSCRIBE_NOTIFICATIONS"),
                         [](const auto& row) { return row.param; });

}  // namespace
