#include "tools/watch_picture.h"

#include "tests/support/time_zone.h"
#include "tools/safe_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using talvik::test::TimeZone;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr std::size_t kInTrouble = 3;

ReceiverStatus receiver(std::uint32_t index, const std::string& state)
{
    ReceiverStatus status;
    status.index = index;
    status.address = "2001:db8:1234:5678:9abc:def0:1234:" + std::to_string(index);
    status.port = 10162;
    status.version = 3;
    status.type = 7;
    status.user = "a-monitor-of-the-other-building";
    status.state = state;
    status.sent = 123456789;
    return status;
}

/// `alarms` alarms, and `receivers` receivers of which the last ones are in trouble.
Look lookAt(std::uint32_t alarms, std::uint32_t receivers)
{
    Look look;
    look.alarms.rows.emplace();
    look.receivers.rows.emplace();
    for (std::uint32_t serial = 1; serial <= alarms; ++serial) {
        look.alarms.rows->push_back({serial, 501010001, 6, 0, "DAE000,7,2102350TLV,1"});
    }
    for (std::uint32_t index = 1; index <= receivers; ++index) {
        const bool bad = index + kInTrouble > receivers;
        look.receivers.rows->push_back(receiver(index, bad ? "does not answer informs" : "ok"));
    }
    return look;
}

std::vector<Change> raised(std::uint32_t count)
{
    Change change;
    change.kind = Change::Kind::Raised;
    change.alarm = ActiveAlarm{7, 501010001, 6, 0, "DAE000,7,2102350TLV,1"};
    return {count, change};
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

class WatchPicture : public testing::Test {
protected:
    static std::vector<std::string> picture(const Look& look, std::uint32_t news,
                                            std::size_t columns, std::size_t rows)
    {
        return linesOf(watchPicture(look, raised(news), {columns, false}, rows));
    }

    TimeZone zone_{"UTC"};
};

TEST_F(WatchPicture, FitsEveryTerminal)
{
    Look away = lookAt(200, 0);
    away.receivers = {};
    away.receivers.failure = Failure(Failure::Kind::Connection, std::string(100, 'w'), "start it");
    for (const auto& look : {lookAt(200, 50), lookAt(0, 0), lookAt(2, 50), lookAt(200, 1), away}) {
        for (const std::uint32_t news : {0U, 1U, 20U}) {
            for (const std::size_t columns : {1U, 20U, 80U, 200U}) {
                for (const std::size_t rows : {1U, 2U, 3U, 4U, 5U, 6U, 8U, 12U, 24U, 50U}) {
                    const auto lines = picture(look, news, columns, rows);
                    EXPECT_LE(lines.size(), std::max<std::size_t>(rows, 2) - 1);
                    for (const auto& line : lines) {
                        EXPECT_LE(shownLength(line), columns) << line;
                    }
                }
            }
        }
    }
}

TEST_F(WatchPicture, SharesTheRowsBetweenAlarmsAndReceivers)
{
    const auto lines = picture(lookAt(200, 50), 1, 80, 24);

    EXPECT_EQ(lines.size(), 23u);
    EXPECT_EQ(lines[1], "active alarms: 200");
    EXPECT_EQ(lines[2], "trap receivers: 50, 3 in trouble");
    EXPECT_EQ(lines[3], "since the last look:");
    EXPECT_THAT(lines, Contains("193 more with smaller serial numbers"));
    EXPECT_THAT(lines, Contains(testing::StartsWith("200     501010001")));
    EXPECT_THAT(lines, Contains(testing::StartsWith("48     2001:db8:")));
    EXPECT_EQ(lines.back(), "and 48 more, 1 in trouble");
}

TEST_F(WatchPicture, ShowsReceiversInTroubleFirst)
{
    auto look = lookAt(0, 4);
    look.receivers.rows->front().state = "refuses informs";
    look.receivers.rows->back().state = "ok";

    const auto lines = picture(look, 0, 200, 24);

    std::vector<std::string> indexes;
    for (const auto& line : lines) {
        if (line.find("2001:db8") != std::string::npos) {
            indexes.push_back(line.substr(0, line.find(' ')));
        }
    }
    EXPECT_THAT(indexes, ElementsAre("1", "2", "3", "4"));
    look.receivers.rows->front().state = "ok";
    EXPECT_THAT(picture(look, 0, 200, 24)[8], testing::StartsWith("2      2001"));
}

TEST_F(WatchPicture, TellsHowManyInTroubleHaveNoRoom)
{
    const auto lines = picture(lookAt(0, 3), 0, 200, 11);

    EXPECT_THAT(lines.back(), AllOf(HasSubstr("and "), HasSubstr(" in trouble")));
}

TEST_F(WatchPicture, GivesTheRoomThatOneDoesNotNeedToTheOther)
{
    const auto fewReceivers = picture(lookAt(200, 1), 0, 200, 24);
    EXPECT_EQ(fewReceivers.size(), 23u);
    EXPECT_THAT(fewReceivers, Contains("187 more with smaller serial numbers"));

    const auto fewAlarms = picture(lookAt(1, 50), 0, 200, 24);
    EXPECT_EQ(fewAlarms.size(), 23u);
    EXPECT_EQ(fewAlarms.back(), "and 37 more");
}

TEST_F(WatchPicture, ShowsNoReceiverInThePlaceOfTheOnlyAlarm)
{
    auto look = lookAt(37, 1);
    auto& receiver = look.receivers.rows->front();
    receiver.address = "127.0.0.1";
    receiver.user = "--";
    receiver.state = "ok";
    for (std::size_t columns = 40; columns <= 120; columns += 5) {
        for (std::size_t rows = 2; rows < 30; ++rows) {
            const auto lines = picture(look, 0, columns, rows);
            const bool hasAlarm = testing::Matches(Contains(HasSubstr("501010001")))(lines);
            const bool hasReceiver = testing::Matches(Contains(HasSubstr("127.0.0.1")))(lines);
            EXPECT_TRUE(hasAlarm || !hasReceiver) << columns << "x" << rows;
        }
    }
}

TEST_F(WatchPicture, TellsTheNumbersWhereNothingElseHasRoom)
{
    EXPECT_THAT(picture(lookAt(200, 50), 2, 20, 5),
                ElementsAre("1970-01-01T00:00:00\u2026", "active alarms: 200",
                            "trap receivers: 50,\u2026", "2 new since the las\u2026"));
    EXPECT_THAT(picture(lookAt(200, 50), 2, 80, 3),
                ElementsAre("active alarms: 200", "trap receivers: 50, 3 in trouble"));
}

TEST_F(WatchPicture, FoldsWhyThereIsNoAnswer)
{
    Look look;
    look.alarms.failure =
        Failure(Failure::Kind::Connection, "cannot connect to it", "start it now");

    EXPECT_THAT(picture(look, 0, 20, 24),
                ElementsAre("1970-01-01T00:00:00\u2026", "nothing new since t\u2026", "",
                            "cannot connect to", "it; start it now"));
    EXPECT_EQ(picture(look, 0, 20, 5).back(), "cannot connect to \u2026");
    EXPECT_THAT(watchPicture(look, {}, {20, true}, 24),
                HasSubstr("\x1B[31mit; start it now\x1B[0m"));
}

TEST_F(WatchPicture, ShowsAsMuchOfTheNewsAsHasRoom)
{
    const auto lines = picture(lookAt(1, 1), 20, 80, 24);

    EXPECT_THAT(lines, Contains("  and 16 more"));
    EXPECT_THAT(picture(lookAt(1, 1), 2, 80, 24), Not(Contains(HasSubstr("more"))));
}

}  // namespace
