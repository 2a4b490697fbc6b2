#include "tools/alarm_scenario.h"

#include "host/startup_error.h"
#include "tests/support/built_tree.h"
#include "tests/support/temp_dir.h"
#include "tools/catalogue/json_document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <set>
#include <string>

namespace {

using namespace talvik::ctl;
using talvik::test::sourceFile;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

using Kind = ScenarioStep::Kind;

class AlarmScenarioFile : public testing::Test {
protected:
    AlarmScenario load(const std::string& text)
    {
        return AlarmScenario::load(dir_.write("s.json", text));
    }

    std::string refusal(const std::string& text)
    {
        try {
            load(text);
        } catch (const talvik::StartupError& error) {
            return error.what();
        }
        return "accepted";
    }

    talvik::test::TempDir dir_;
};

TEST_F(AlarmScenarioFile, GivesItsStepsInOrder)
{
    const auto scenario = load(R"({"steps": [
        {"raise": {"id": "18446744073709551615", "params": ["a", "", "c"], "severity": "minor", "as": "x", "time": 9}},
        {"pauseMs": 200}, {"clear": "x"}, {"event": {"id": "7"}}, {"raise": {"id": "7", "severity": 7}},
        {"raise": {"id": "7"}}]})");

    const auto& steps = scenario.steps();
    ASSERT_EQ(steps.size(), 6u);
    EXPECT_EQ(scenario.total(), 6u);
    EXPECT_EQ(steps[0].kind, Kind::Raise);
    EXPECT_EQ(steps[0].place, "steps[0]");
    EXPECT_EQ(steps[0].report.id, 18446744073709551615U);
    EXPECT_EQ(steps[0].report.parameters, "a,,c");
    EXPECT_EQ(steps[0].report.severity, 4u);
    EXPECT_EQ(steps[0].report.time, 9u);
    EXPECT_EQ(steps[0].name, "x");
    EXPECT_EQ(steps[1].pauseMs, 200u);
    EXPECT_EQ(steps[2].kind, Kind::Clear);
    EXPECT_EQ(steps[2].name, "x");
    EXPECT_EQ(steps[3].kind, Kind::Event);
    EXPECT_EQ(steps[3].report.severity, 2u);
    EXPECT_EQ(steps[3].report.time, std::nullopt);
    EXPECT_EQ(steps[4].report.severity, 7u);
    EXPECT_EQ(steps[5].report.severity, 5u);
}

TEST_F(AlarmScenarioFile, CountsWhatItRepeats)
{
    const auto scenario = load(R"({"steps": [{"pauseMs": 0}, {"repeat": {"times": 3, "steps": [
        {"pauseMs": 0}, {"repeat": {"times": 100, "steps": [{"pauseMs": 0}]}}]}}]})");

    EXPECT_EQ(scenario.total(), 1u + 3u * 101u);
    EXPECT_EQ(scenario.steps()[1].steps[1].steps[0].place,
              "steps[1].repeat.steps[1].repeat.steps[0]");
}

TEST_F(AlarmScenarioFile, LetsANameBeUsedAgain)
{
    EXPECT_EQ(refusal(R"({"steps": [{"repeat": {"times": 5, "steps": [
        {"raise": {"id": "1", "as": "x"}}, {"clear": "x"}]}}, {"raise": {"id": "1", "as": "x"}}]})"),
              "accepted");
}

TEST_F(AlarmScenarioFile, OfTheDeliveryNamesAlarmsOfTheDeliveredCatalogue)
{
    std::set<std::string> known;
    const auto catalogue = JsonDocument::load(sourceFile("etc/alarm-definitions.json"));
    for (const auto& definition : catalogue.root()["root"]["eventDefinition"]["param"]) {
        known.insert(definition["eventID"].asString());
    }

    const auto scenario = AlarmScenario::load(sourceFile("etc/example-scenario.json"));

    EXPECT_GT(scenario.total(), 10u);
    for (const auto& step : scenario.steps()) {
        if (step.kind == Kind::Raise || step.kind == Kind::Event) {
            EXPECT_EQ(known.count(std::to_string(step.report.id)), 1u) << step.place;
        }
    }
}

TEST_F(AlarmScenarioFile, IsNamedWhenItCannotBeRead)
{
    EXPECT_THAT([&] { AlarmScenario::load(dir_.path("missing")); },
                testing::ThrowsMessage<talvik::StartupError>(
                    AllOf(StartsWith("scenario " + dir_.path("missing")),
                          HasSubstr("cannot be read: No such file or directory"))));
}

struct Refusal {
    const char* name;
    std::string steps;
    const char* message;

    friend std::ostream& operator<<(std::ostream& os, const Refusal& row) { return os << row.name; }
};

class AlarmScenarioRefusal : public AlarmScenarioFile,
                             public testing::WithParamInterface<Refusal> {};

TEST_P(AlarmScenarioRefusal, NamesThePlaceAndTheReason)
{
    EXPECT_THAT(refusal(R"({"steps": [)" + GetParam().steps + "]}"), HasSubstr(GetParam().message));
}

// NOLINTNEXTLINE(misc-no-recursion)
std::string nested(int depth)
{
    return depth == 0 ? R"({"pauseMs": 1})"
                      : R"({"repeat": {"times": 1, "steps": [)" + nested(depth - 1) + "]}}";
}

const Refusal kRefusals[] = {
    {"NoSteps", "", "steps: expected at least one step"},
    {"NoObject", "1", "steps[0]: expected an object with one member"},
    {"TwoInOne", R"({"pauseMs": 1, "clear": "x"})", "steps[0]: expected an object with one member"},
    {"UnknownStep", R"({"pauseMs": 1}, {"wait": 1})", "steps[1]: unknown step \"wait\""},
    {"RaiseWithoutId", R"({"raise": {}})", "steps[0].raise: lacks the member \"id\""},
    {"RaiseNothing", R"({"raise": "7"})", "steps[0].raise: expected an object"},
    {"UnknownMember", R"({"raise": {"id": "1", "param": []}})",
     "steps[0].raise: unknown member \"param\""},
    {"IdANumber", R"({"raise": {"id": 7}})", "steps[0].raise.id: expected a text"},
    {"IdZero", R"({"raise": {"id": "0"}})", "steps[0].raise.id: \"0\" is no alarm id"},
    {"IdAWord", R"({"event": {"id": "disk"}})", "steps[0].event.id: \"disk\" is no alarm id"},
    {"ParamWithComma", R"({"raise": {"id": "1", "params": ["a", "b,c"]}})",
     "steps[0].raise.params[1]: \"b,c\" contains a comma"},
    {"ParamANumber", R"({"raise": {"id": "1", "params": [7]}})",
     "steps[0].raise.params[0]: expected a text"},
    {"ParamsAText", R"({"raise": {"id": "1", "params": "a"}})",
     "steps[0].raise.params: expected an array"},
    {"ParamWithNul", R"({"raise": {"id": "1", "params": ["\u0000"]}})",
     "params[0]: a parameter cannot contain a NUL"},
    {"ParamsTooLong", R"({"raise": {"id": "1", "params": [")" + std::string(32769, 'x') + R"("]}})",
     "steps[0].raise.params: the parameters have 32769 bytes together, at most 32768"},
    {"Severity", R"({"raise": {"id": "1", "severity": "bad"}})",
     "steps[0].raise.severity: \"bad\" is no severity; known are info (2)"},
    {"SeverityOne", R"({"raise": {"id": "1", "severity": 1}})", "severity: \"1\" is no severity"},
    {"TimeNegative", R"({"raise": {"id": "1", "time": -1}})",
     "steps[0].raise.time: expected a number from 0 to"},
    {"NameEmpty", R"({"raise": {"id": "1", "as": ""}})", "steps[0].raise.as: expected a name"},
    {"EventWithName", R"({"event": {"id": "1", "as": "x"}})",
     "steps[0].event: unknown member \"as\""},
    {"ClearUnknown", R"({"clear": "x"})",
     "\"x\" is cleared, but no alarm has that name then, at steps[0]"},
    {"ClearTwice", R"({"raise": {"id": "1", "as": "x"}}, {"clear": "x"}, {"clear": "x"})",
     "at steps[2]"},
    {"ClearInSecondRound",
     R"({"raise": {"id": "1", "as": "x"}}, {"repeat": {"times": 2, "steps": [{"clear": "x"}]}})",
     "\"x\" is cleared, but no alarm has that name then, at steps[1].repeat.steps[0]"},
    {"RaiseInSecondRound",
     R"({"repeat": {"times": 2, "steps": [{"raise": {"id": "1", "as": "x"}}]}})",
     "\"x\" is raised again before it is cleared, at steps[0].repeat.steps[0]"},
    {"PauseTooLong", R"({"pauseMs": 600001})",
     "steps[0].pauseMs: expected a number from 0 to 600000"},
    {"RepeatNever", R"({"repeat": {"times": 0, "steps": [{"pauseMs": 1}]}})",
     "repeat.times: expected a number from 1 to 100000"},
    {"RepeatTooOften", R"({"repeat": {"times": 100001, "steps": [{"pauseMs": 1}]}})",
     "repeat.times: expected a number from 1 to 100000"},
    {"RepeatNothing", R"({"repeat": {"times": 1, "steps": []}})",
     "steps[0].repeat.steps: expected at least one step"},
    {"TooManySteps",
     R"({"repeat": {"times": 1001, "steps": [{"repeat": {"times": 1000, "steps": [{"pauseMs": 0}]}}]}})",
     "more than 1000000 steps, at steps[0]"},
    {"TooDeep", nested(5), "repeats stand within each other 4 deep at most"},
    {"TrailingComma", R"({"pauseMs": 1},)", "s.json: Line 1, Column"},
    {"TwiceTheSame", R"({"pauseMs": 1, "pauseMs": 2})", "Duplicate key"},
};

INSTANTIATE_TEST_SUITE_P(Steps, AlarmScenarioRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return row.param.name; });

TEST_F(AlarmScenarioFile, MayRepeatFourDeep)
{
    EXPECT_EQ(refusal(R"({"steps": [)" + nested(4) + "]}"), "accepted");
}

TEST_F(AlarmScenarioFile, ShowsWhatIsNotPrintableAsEscapes)
{
    EXPECT_THAT(refusal(R"({"steps": [{"clear": "\u001b[2J"}]})"), HasSubstr("\\x1B[2J"));
}

}  // namespace
