#include "tests/support/temp_dir.h"
#include "tests/unit/backend/program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

using namespace talvik::test;
using testing::AllOf;
using testing::HasSubstr;

using Words = std::vector<std::string>;

struct Usage {
    const char* name;
    Words words;
    const char* message;

    friend std::ostream& operator<<(std::ostream& os, const Usage& row) { return os << row.name; }
};

const Usage kWrong[] = {
    {"NoCommand", {"alarm"}, "talvikctl: talvikctl alarm needs a command: one of list, raise, "},
    {"RaiseNothing", {"alarm", "raise"}, "ID is required"},
    {"RaiseZero", {"alarm", "raise", "0"}, "\"0\" is no number from 1 to 18446744073709551615"},
    {"RaiseTooLarge", {"alarm", "raise", "18446744073709551616"}, "is no number from 1 to"},
    {"RaiseTwo", {"alarm", "raise", "1", "2"}, "2"},
    {"Comma", {"alarm", "raise", "1", "--param", "a,b"}, "--param: \"a,b\" contains a comma"},
    {"CommaInTheFirst",
     {"alarm", "raise", "1", "--param", "a,b", "--param", "c"},
     "\"a,b\" contains a comma"},
    {"NoParam", {"alarm", "raise", "1", "--param"}, "--param"},
    {"Severity",
     {"alarm", "event", "1", "--severity", "bad"},
     "\"bad\" is none of info (2), warning (3)"},
    {"SeverityTooLow", {"alarm", "event", "1", "--severity", "1"}, "or a number from 2 to 7"},
    {"Time",
     {"alarm", "event", "1", "--time", "253402300800"},
     "is no number from 0 to 253402300799"},
    {"TimeNegative", {"alarm", "event", "1", "--time=-1"}, "\"-1\" is no number"},
    {"ListSomething", {"alarm", "list", "1"}, "1"},
    {"ListAfterTooLarge",
     {"alarm", "list", "--after", "4294967296"},
     "--after: \"4294967296\" is no number from 0 to 4294967295"},
    {"ListAfterNegative", {"alarm", "list", "--after=-1"}, "\"-1\" is no number"},
    {"ListNone",
     {"alarm", "list", "--limit", "0"},
     "--limit: \"0\" is no number from 1 to 4294967295"},
    {"ListWithoutLimit", {"alarm", "list", "--limit"}, "--limit"},
    {"ClearNothing", {"alarm", "clear"}, "SERIAL is required"},
    {"ClearZero", {"alarm", "clear", "1", "0"}, "\"0\" is no number from 1 to 4294967295"},
    {"ClearTooLarge", {"alarm", "clear", "4294967296"}, "is no number from 1 to 4294967295"},
    {"ResendSomething", {"alarm", "resend", "1"}, "1"},
    {"ScenarioNothing", {"alarm", "scenario"}, "FILE is required"},
    {"Timeout", {"alarm", "resend", "--timeout", "0"}, "--timeout: Value 0 not in range"},
    {"TestNothing", {"trap", "test"}, "INDEX is required"},
    {"TestZero", {"trap", "test", "0"}, "\"0\" is no number from 1 to 2147483647"},
    {"StatusOfOne", {"trap", "status", "1"}, "1"},
};

class TalvikctlAlarmUsage : public testing::TestWithParam<Usage> {};

TEST_P(TalvikctlAlarmUsage, IsExplained)
{
    Program program("talvikctl", GetParam().words);
    EXPECT_EQ(program.wait(), 2) << program.output();
    EXPECT_THAT(program.output(), AllOf(HasSubstr(GetParam().message), HasSubstr("--help")));
}

INSTANTIATE_TEST_SUITE_P(Words, TalvikctlAlarmUsage, testing::ValuesIn(kWrong),
                         [](const auto& row) { return row.param.name; });

TEST(TalvikctlAlarm, RefusesTooManyParametersBeforeItAsksAnybody)
{
    Program program("talvikctl", {"alarm", "raise", "1", "--param", std::string(32768, 'x'),
                                  "--param", "", "--device", sampleDeviceFile()});
    EXPECT_EQ(program.wait(), 2);
    EXPECT_THAT(program.output(), HasSubstr("have 32769 bytes together, at most 32768"));
}

TEST(TalvikctlAlarm, ChecksAScenarioBeforeItAsksAnybody)
{
    const TempDir dir;
    const auto file = dir.write("s.json", R"({"steps": [{"pauseMs": 1}, {"clear": "x"}]})");
    Program program("talvikctl", {"alarm", "scenario", file, "--device", sampleDeviceFile()});
    EXPECT_EQ(program.wait(), 2);
    EXPECT_EQ(program.output(), "talvikctl: scenario " + file +
                                    ": \"x\" is cleared, but no alarm has that name then, at "
                                    "steps[1]\n");
}

TEST(TalvikctlAlarm, HasHelpWithExamplesAndTheNamesOfSeverities)
{
    for (const auto* command : {"list", "raise", "event", "clear", "resend", "scenario"}) {
        Program help("talvikctl", {"alarm", command, "--help"});
        EXPECT_EQ(help.wait(), 0);
        EXPECT_THAT(help.output(), AllOf(HasSubstr("Example"), HasSubstr("--socket PATH")))
            << command;
    }
    Program help("talvikctl", {"alarm", "raise", "--help"});
    EXPECT_EQ(help.wait(), 0);
    EXPECT_THAT(help.output(),
                HasSubstr("info (2), warning (3), minor (4), major (5), critical (6)"));
}

}  // namespace
