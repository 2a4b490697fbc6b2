#include "backend/back_end.h"
#include "backend/server_thread.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/alarm_desk.h"
#include "tests/unit/backend/alarm_kit.h"
#include "tests/unit/backend/socket_kit.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

/// GET_CURRENT_ALARM: every reply is compared with bytes that are put together here.
namespace {

using namespace talvik::test;
using namespace talvik::backend;
using talvik::DeviceConfigFile;
using talvik::DurableDatabase;

constexpr std::uint64_t kShow = 4002;
constexpr std::uint32_t kLastSerial = 0xFFFFFFFF;

Wire asked(std::uint32_t after, std::uint32_t count)
{
    return Wire().numberCell(3, after, 4).numberCell(9, count, 4);
}

Wire shown(std::uint32_t serial, const Alarm& alarm)
{
    return Wire::record(kAlarmRecord, Wire()
                                          .numberCell(0, 1, 1)
                                          .numberCell(1, alarm.id, 8)
                                          .numberCell(2, alarm.level, 4)
                                          .numberCell(3, serial, 4)
                                          .numberCell(4, alarm.time, 8)
                                          .textCell(8, alarm.parameters));
}

Wire endMark()
{
    return Wire::record(kAlarmRecord, Wire().numberCell(4095, 0, 4));
}

Bytes answered(const Wire& records)
{
    return Wire::package(2, 7, 0, records).bytes();
}

/// Raises alarms whose ids are their serial numbers.
void raise(AlarmStore& store, std::uint32_t count, const std::string& parameters = "CTE0,B")
{
    for (std::uint32_t serial = 1; serial <= count; ++serial) {
        ASSERT_EQ(store.raise(alarmOf(serial, parameters)).serial, serial);
    }
}

/// The records of what `raise` made, from `first` to `last`.
Wire raised(std::uint32_t first, std::uint32_t last, const std::string& parameters = "CTE0,B")
{
    Wire records;
    for (std::uint32_t serial = first; serial <= last; ++serial) {
        records.append(shown(serial, alarmOf(serial, parameters)));
    }
    return records;
}

struct PageRow {
    const char* name;
    std::uint32_t active;
    std::uint32_t after;
    std::uint32_t count;
    std::uint32_t first;  ///< in the reply; above `last` when there is none
    std::uint32_t last;
    bool end;

    friend std::ostream& operator<<(std::ostream& os, const PageRow& row) { return os << row.name; }
};

class ActiveAlarmPage : public testing::TestWithParam<PageRow> {};

TEST_P(ActiveAlarmPage, HasWhatComesNextAndTheEndMarkIfThatIsAll)
{
    AlarmDesk desk;
    raise(desk.store, GetParam().active);

    const auto reply = desk.ask(kShow, asked(GetParam().after, GetParam().count));

    auto records = raised(GetParam().first, GetParam().last);
    EXPECT_EQ(reply, answered(GetParam().end ? records.append(endMark()) : records));
}

const PageRow kPages[] = {
    {"OfNone", 0, 0, 50, 1, 0, true},
    {"OfNoneFromFarBehind", 0, kLastSerial, 1, 1, 0, true},
    {"OfTheOnlyOne", 1, 0, 1, 1, 1, true},
    {"OfFewerThanAskedFor", 49, 0, 50, 1, 49, true},
    {"OfAsManyAsAskedFor", 50, 0, 50, 1, 50, true},
    {"OfOneLessThanThereAre", 51, 0, 50, 1, 50, false},
    {"OfTheOneThatWasLeft", 51, 50, 50, 51, 51, true},
    {"OfTheFirst", 51, 0, 1, 1, 1, false},
    {"OfOneInTheMiddle", 51, 24, 1, 25, 25, false},
    {"OfTheLastButOne", 51, 49, 1, 50, 50, false},
    {"OfTheLast", 51, 50, 1, 51, 51, true},
    {"BehindTheLast", 51, 51, 50, 1, 0, true},
    {"BehindAllThatCanBe", 51, kLastSerial, 50, 1, 0, true},
    {"OfAThousandAtOnce", 1000, 0, 1000, 1, 1000, true},
    {"OfAThousandOfMore", 1001, 0, 1000, 1, 1000, false},
    {"OfFiftyOfAThousand", 1000, 900, 50, 901, 950, false},
    {"OfTheLastFiftyOfAThousand", 1000, 950, 50, 951, 1000, true},
};

INSTANTIATE_TEST_SUITE_P(Sizes, ActiveAlarmPage, testing::ValuesIn(kPages),
                         [](const auto& row) { return row.param.name; });

TEST(ActiveAlarms, NeedNotExistWhereAPageStarts)
{
    AlarmDesk desk;
    raise(desk.store, 6);
    for (const auto serial : {2U, 3U, 6U}) {
        ASSERT_EQ(desk.store.clear(serial, "me", 2000), 0U);
    }

    for (const auto start : {1U, 2U, 3U}) {
        EXPECT_EQ(desk.ask(kShow, asked(start, 50)), answered(raised(4, 5).append(endMark())));
        EXPECT_EQ(desk.ask(kShow, asked(start, 1)), answered(raised(4, 4)));
    }
    EXPECT_EQ(desk.ask(kShow, asked(0, 2)), answered(raised(1, 1).append(raised(4, 4))));
    EXPECT_EQ(desk.ask(kShow, asked(4, 1)), answered(raised(5, 5).append(endMark())));
    EXPECT_EQ(desk.ask(kShow, asked(5, 50)), answered(endMark()));
}

TEST(ActiveAlarms, MayBeClearedAndRaisedBetweenPages)
{
    AlarmDesk desk;
    raise(desk.store, 5);
    EXPECT_EQ(desk.ask(kShow, asked(0, 2)), answered(raised(1, 2)));

    for (const auto serial : {1U, 2U, 4U}) {
        ASSERT_EQ(desk.store.clear(serial, "me", 2000), 0U);
    }
    desk.store.raise(alarmOf(6));

    EXPECT_EQ(desk.ask(kShow, asked(2, 2)), answered(raised(3, 3).append(raised(5, 5))));
    EXPECT_EQ(desk.ask(kShow, asked(5, 2)), answered(raised(6, 6).append(endMark())));
    ASSERT_EQ(desk.store.clear(6, "me", 2000), 0U);
    EXPECT_EQ(desk.ask(kShow, asked(5, 2)), answered(endMark()));
}

TEST(ActiveAlarms, AreNoEvents)
{
    AlarmDesk desk;
    desk.store.reportEvent(alarmOf(1));

    EXPECT_EQ(desk.ask(kShow, asked(0, 50)), answered(endMark()));
}

TEST(ActiveAlarms, KeepTheLargestValuesAndNoParameters)
{
    AlarmDesk desk;
    const Alarm largest{~std::uint64_t{0}, 0xFFFFFFFF, 253402300799, std::string(32768, 'p')};
    const Alarm least{1, 0, 0, ""};
    desk.store.raise(largest);
    desk.store.raise(least);

    EXPECT_EQ(desk.ask(kShow, asked(0, 50)),
              answered(shown(1, largest).append(shown(2, least)).append(endMark())));
}

TEST(ActiveAlarms, AreAskedForWithNumbersOfAnyWidth)
{
    AlarmDesk desk;
    raise(desk.store, 3);

    EXPECT_EQ(desk.ask(kShow, Wire().numberCell(9, 1, 8).numberCell(3, 1, 1)),
              answered(raised(2, 2)));
}

TEST(ActiveAlarms, WithLongParametersComeInShorterPages)
{
    constexpr std::uint32_t kAlarms = 40;
    constexpr std::uint32_t kInAMebibyte = 32;
    const std::string longest(32768, 'p');
    AlarmDesk desk;
    raise(desk.store, kAlarms, longest);

    EXPECT_EQ(desk.ask(kShow, asked(0, 1000)), answered(raised(1, kInAMebibyte, longest)));
    EXPECT_EQ(desk.ask(kShow, asked(kInAMebibyte, 1000)),
              answered(raised(kInAMebibyte + 1, kAlarms, longest).append(endMark())));
    EXPECT_EQ(desk.ask(kShow, asked(kAlarms - kInAMebibyte, 1000)),
              answered(raised(kAlarms - kInAMebibyte + 1, kAlarms, longest).append(endMark())))
        << "a page that is full and the last";
}

/// The same over a connection.
class ActiveAlarmsOverSocket : public testing::Test {
protected:
    /// Sends the request and expects a reply of these records.
    void expect(std::uint32_t after, std::uint32_t count, const Wire& records)
    {
        const auto reply = answered(records);
        client_.send(
            Wire::package(1, 7, 0xFFFFFFFF, Wire::record(kShow, asked(after, count))).bytes());
        EXPECT_EQ(client_.receive(reply.size()), reply);
    }

    TempDir dir_;
    BackEnd backEnd_{DeviceConfigFile::load(sampleDeviceFile()), DurableDatabase::kInMemory};
    ServerThread thread_{backEnd_.commands(), dir_.path("socket"), &backEnd_};
    Stream client_ = Stream::connectedTo(dir_.path("socket"));
};

TEST_F(ActiveAlarmsOverSocket, ComePageByPageOnOneConnection)
{
    const std::string text(2000, 'p');
    raise(backEnd_.alarms(), 1000, text);

    expect(0, 1, raised(1, 1, text));
    for (std::uint32_t after = 0; after < 500; after += 50) {
        expect(after, 50, raised(after + 1, after + 50, text));
    }
    expect(500, 1000, raised(501, 1000, text).append(endMark()));
    expect(1000, 1000, endMark());
}

TEST_F(ActiveAlarmsOverSocket, AreRefusedWithACodeAndGoOn)
{
    raise(backEnd_.alarms(), 1);
    client_.send(Wire::package(1, 7, 0xFFFFFFFF, Wire::record(kShow, asked(0, 1001))).bytes());

    EXPECT_EQ(client_.receive(28), Wire::refusal(7, 0x1000015).bytes());

    expect(0, 1000, raised(1, 1).append(endMark()));
}

}  // namespace
