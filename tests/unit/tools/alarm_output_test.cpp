#include "tools/alarm_output.h"

#include "tests/support/time_zone.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace {

using namespace talvik::ctl;
using talvik::test::TimeZone;

TEST(ActiveAlarmsText, IsATableWithTimesOfTheLocalZone)
{
    const TimeZone zone("CET-1");

    EXPECT_EQ(
        activeAlarmsText({{7, 501010001, 5, 1700000000, "DAE000,7,,1"},
                          {4294967295, 18446744073709551615U, 12, 0, ""}}),
        "SERIAL      ID                    SEVERITY   TIME                       PARAMETERS\n"
        "7           501010001             major (5)  2023-11-14T23:13:20+01:00  DAE000,7,,1\n"
        "4294967295  18446744073709551615  12         1970-01-01T01:00:00+01:00  \n");
}

TEST(ActiveAlarmsText, IsSafeForATerminal)
{
    const TimeZone zone("UTC");

    EXPECT_EQ(activeAlarmsText({{1, 2, 7, 0, "a\x1B[2J\n\xFF\xC3\xA4"}}),
              "SERIAL  ID  SEVERITY      TIME                       PARAMETERS\n"
              "1       2   critical (7)  1970-01-01T00:00:00+00:00  a\\x1B[2J\\x0A\\xFF\xC3\xA4\n");
}

TEST(ActiveAlarmsText, SaysThatThereAreNone)
{
    EXPECT_EQ(activeAlarmsText({}), "no active alarms\n");
}

TEST(ActiveAlarmsJson, IsAnArrayInTheOrderOfTheAlarms)
{
    const auto list = activeAlarmsJson(
        {{7, 18446744073709551615U, 2, 253402300799, "a,\n\xFF"}, {9, 1, 12, 0, ""}});

    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].size(), 6U);
    EXPECT_EQ(list[0]["serial"], 7U);
    EXPECT_EQ(list[0]["id"], "18446744073709551615");
    EXPECT_EQ(list[0]["severity"], "info");
    EXPECT_EQ(list[0]["level"], 2U);
    EXPECT_EQ(list[0]["time"].asUInt64(), 253402300799U);
    EXPECT_EQ(list[0]["parameters"], "a,\n\\xFF");
    EXPECT_EQ(list[1]["serial"], 9U);
    EXPECT_TRUE(list[1]["severity"].isNull());
    EXPECT_EQ(list[1]["level"], 12U);
    EXPECT_EQ(list[1]["parameters"], "");
}

TEST(ActiveAlarmsJson, IsAnEmptyArrayWithoutAlarms)
{
    EXPECT_EQ(activeAlarmsJson({}), Json::Value(Json::arrayValue));
}

std::string timeIn(const char* zone, std::uint64_t seconds)
{
    const TimeZone local(zone);
    return localIsoTime(seconds);
}

TEST(LocalIsoTime, HasTheZonesDistanceFromUtc)
{
    EXPECT_EQ(timeIn("NST3:30", 0), "1969-12-31T20:30:00-03:30");
    EXPECT_EQ(timeIn("UTC", 253402300799), "9999-12-31T23:59:59+00:00");
}

TEST(LocalIsoTime, LeavesWhatNoCalendarHasANumber)
{
    for (const auto seconds : {std::numeric_limits<std::uint64_t>::max(),
                               static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()),
                               std::uint64_t{1} << 63U}) {
        EXPECT_EQ(localIsoTime(seconds), std::to_string(seconds));
    }
}

}  // namespace
