#include "tools/watcher.h"

#include "tests/support/time_zone.h"
#include "tools/watch_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using talvik::test::TimeZone;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const Failure kAway(Failure::Kind::Connection, "cannot connect", "start it");

ActiveAlarm alarm(std::uint32_t serial)
{
    return {serial, 501010001, 6, 0, "a,b"};
}

ReceiverStatus receiver(std::uint32_t index, std::uint64_t sent)
{
    ReceiverStatus status;
    status.index = index;
    status.address = "192.0.2.1";
    status.port = 162;
    status.version = 2;
    status.type = 1;
    status.user = "--";
    status.state = "ok";
    status.sent = sent;
    return status;
}

Look alarmsLook(std::vector<ActiveAlarm> rows)
{
    Look look;
    look.alarms.rows = std::move(rows);
    return look;
}

Look receiversLook(std::vector<ReceiverStatus> rows)
{
    Look look;
    look.receivers.rows = std::move(rows);
    return look;
}

Look awayLook()
{
    Look look;
    look.alarms.failure = kAway;
    return look;
}

class WatcherTest : public testing::Test {
protected:
    /// The changes that a look brings, as lines without their time.
    std::vector<std::string> news(const Look& look)
    {
        std::vector<std::string> lines;
        for (const auto& change : watcher_.changesOf(look)) {
            const auto line = changeText(change, 0, {});
            lines.push_back(line.substr(line.find("  ") + 2));
        }
        return lines;
    }

    TimeZone zone_{"UTC"};
    Watcher watcher_;
};

TEST_F(WatcherTest, TellsWhatIsRaisedAndCleared)
{
    EXPECT_THAT(news(alarmsLook({alarm(3), alarm(5)})),
                ElementsAre("active alarm  3  501010001  critical (6)  1970-01-01T00:00:00+00:00  "
                            "a,b\n",
                            HasSubstr("active alarm  5  ")));
    EXPECT_THAT(news(alarmsLook({alarm(3), alarm(5)})), IsEmpty());
    EXPECT_THAT(news(alarmsLook({alarm(5), alarm(6)})),
                ElementsAre(HasSubstr("raised alarm  6  "), HasSubstr("cleared alarm  3  ")));
}

TEST_F(WatcherTest, GoesOnWhenThereIsNoAnswer)
{
    news(alarmsLook({alarm(3)}));

    EXPECT_THAT(news(awayLook()), ElementsAre("alarms: cannot connect; start it\n"));
    EXPECT_THAT(news(awayLook()), IsEmpty());
    EXPECT_THAT(news(alarmsLook({alarm(4)})),
                ElementsAre("alarms: there are answers again\n", HasSubstr("raised alarm  4"),
                            HasSubstr("cleared alarm  3")));
}

TEST_F(WatcherTest, BeginsWithoutAnAnswer)
{
    EXPECT_THAT(news(awayLook()), ElementsAre(HasSubstr("cannot connect")));
    EXPECT_THAT(news(alarmsLook({alarm(4)})),
                ElementsAre(HasSubstr("answers again"), HasSubstr("active alarm  4")));
}

TEST_F(WatcherTest, CountsWhatReceiversGot)
{
    EXPECT_THAT(news(receiversLook({receiver(1, 5), receiver(2, 0)})),
                ElementsAre("receiver 1 192.0.2.1 port 162: ok, sent 5, failed 0, answered 0, "
                            "given up 0, waiting 0\n",
                            HasSubstr("receiver 2")));
    EXPECT_THAT(news(receiversLook({receiver(1, 7), receiver(3, 0)})),
                ElementsAre(HasSubstr("receiver 1 192.0.2.1 port 162: ok, sent 7 (+2), failed 0"),
                            HasSubstr("receiver 3 192.0.2.1 port 162 added: ok"),
                            HasSubstr("receiver 2 192.0.2.1 port 162 removed")));
    EXPECT_THAT(news(receiversLook({receiver(1, 1), receiver(3, 0)})),
                ElementsAre(HasSubstr("sent 1 (+1)")));
}

TEST_F(WatcherTest, IsAJsonObjectAChange)
{
    news(receiversLook({receiver(1, 5)}));
    const auto changes = watcher_.changesOf(receiversLook({receiver(1, 7)}));
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_THAT(
        changeJson(changes[0], 12),
        testing::AllOf(HasSubstr(R"("counted":{"answered":0,"failed":0,"givenUp":0,"sent":2})"),
                       HasSubstr(R"("event":"receiver-changed")"), HasSubstr(R"("time":12)"),
                       HasSubstr(R"("what":"traps")")));

    const auto away = watcher_.changesOf(awayLook());
    EXPECT_EQ(changeJson(away.at(0), 13),
              R"({"advice":"start it","event":"away","reason":"cannot connect","time":13,)"
              "\"what\":\"alarms\"}\n");
}

}  // namespace
