#include "host/platform/name_log.h"

#include "tests/unit/host_snmp/log_kit.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>

namespace {

using namespace std::chrono_literals;
using talvik::NameLog;
using talvik::test::LoggerCapture;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

class NameLogTest : public testing::Test {
protected:
    void stops(const std::string& name) { log_.note({name, false, "no such name"}, now_); }
    void resolvesAgain(const std::string& name) { log_.note({name, true, ""}, now_); }

    LoggerCapture lines_{"host"};
    NameLog log_;
    NameLog::Time now_{1h};
};

}  // namespace

TEST_F(NameLogTest, NamesEachDestinationAndTheReason)
{
    stops("nms.example");
    resolvesAgain("nms.example");

    EXPECT_THAT(lines_.lines(),
                ElementsAre("trap destination nms.example: the name does not resolve (no such "
                            "name); it is looked up again within about a minute. Check it, "
                            "/etc/hosts and the name servers in /etc/resolv.conf",
                            "trap destination nms.example: the name resolves again"));
    EXPECT_EQ(log_.nextSum(), NameLog::Time::max());
}

TEST_F(NameLogTest, SumsUpWhatIsMoreThanTenWithinAMinute)
{
    for (int i = 0; i < 1000; ++i) {
        stops("a" + std::to_string(i));
    }
    resolvesAgain("a0");
    EXPECT_THAT(lines_.lines(), SizeIs(10));
    EXPECT_EQ(log_.nextSum(), now_ + 1min);
    log_.sumUp(now_ + 59s);
    EXPECT_THAT(lines_.lines(), SizeIs(10));

    now_ += 1min;
    log_.sumUp(now_);
    log_.sumUp(now_);

    ASSERT_THAT(lines_.lines(), SizeIs(11));
    EXPECT_EQ(lines_.lines().back(), "trap destinations: within a minute 990 more names stopped "
                                     "resolving and 1 more resolved again");
}

TEST_F(NameLogTest, BeginsAnewAfterTheMinute)
{
    for (int i = 0; i < 11; ++i) {
        stops("a");
    }
    now_ += 1min;

    stops("b");

    ASSERT_THAT(lines_.lines(), SizeIs(12));
    EXPECT_THAT(lines_.lines()[10], HasSubstr("1 more names stopped"));
    EXPECT_THAT(lines_.lines()[11], HasSubstr("trap destination b:"));
}

TEST_F(NameLogTest, KeepsANameFromPassingForALineOfItsOwn)
{
    stops("a\nb\x1b");

    ASSERT_THAT(lines_.lines(), SizeIs(2));
    EXPECT_THAT(lines_.lines()[1], HasSubstr("    b\\x1B: the name"));
}
