#include "tools/alarm_input.h"

#include "alarmconfig/alarm_config_parser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

namespace {

using namespace talvik::ctl;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(AlarmSeverity, HasNamesInTheOrderThatManagersSee)
{
    const std::pair<const char*, int> rows[] = {
        {"critical", 1}, {"major", 2}, {"minor", 3}, {"warning", 4}, {"info", 5}};
    for (const auto& [name, shown] : rows) {
        const auto level = severityLevel(name);
        ASSERT_TRUE(level) << name;
        EXPECT_EQ(CAlarmConfigParser::converToQ7400AlarmLevel(static_cast<int>(*level)), shown)
            << name;
        EXPECT_THAT(severityNames(), HasSubstr(name + (" (" + std::to_string(*level) + ")")));
    }
}

TEST(AlarmSeverity, CanBeANumberThatTheModuleKnows)
{
    EXPECT_EQ(severityLevel("2"), 2u);
    EXPECT_EQ(severityLevel("7"), 7u);
    for (const auto* text : {"", "1", "8", "0", "-2", "02", " 2", "2 ", "Major", "+3", "3.0"}) {
        EXPECT_EQ(severityLevel(text), std::nullopt) << '"' << text << '"';
    }
}

TEST(AlarmSeverity, HasItsNameBack)
{
    for (const auto* name : {"info", "warning", "minor", "major", "critical"}) {
        EXPECT_EQ(severityName(*severityLevel(name)), name);
    }
    EXPECT_EQ(severityName(7), "critical");
    for (const auto level : {0U, 1U, 8U, 0xFFFFFFFFU}) {
        EXPECT_EQ(severityName(level), std::nullopt) << level;
    }
}

TEST(WholeNumber, HasBoundsAndNoOrnaments)
{
    constexpr auto most = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(wholeNumber("18446744073709551615", 1, most), most);
    EXPECT_EQ(wholeNumber("0", 0, 5), 0u);
    for (const auto* text :
         {"18446744073709551616", "0", "01", "-1", "+1", "1 ", "0x1", "1e3", ""}) {
        EXPECT_EQ(wholeNumber(text, 1, most), std::nullopt) << '"' << text << '"';
    }
}

TEST(AlarmParameters, AreJoinedByCommasEmptyOnesToo)
{
    EXPECT_EQ(joinedParameters({}), "");
    EXPECT_EQ(joinedParameters({"DAE0"}), "DAE0");
    EXPECT_EQ(joinedParameters({"", "7", "", ""}), ",7,,");
}

TEST(AlarmParameters, CannotContainTheirSeparator)
{
    EXPECT_THAT(parameterRefusal("DAE&#44;0 & more"), IsEmpty());
    EXPECT_THAT(parameterRefusal("DAE,0"), HasSubstr("\"DAE,0\" contains a comma"));
    EXPECT_THAT(parameterRefusal("DAE,0"), HasSubstr("&#44;"));
    EXPECT_THAT(parameterRefusal(std::string("DAE\0", 4)), HasSubstr("NUL"));
}

}  // namespace
