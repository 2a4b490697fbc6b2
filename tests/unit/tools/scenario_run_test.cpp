#include "tools/scenario_run.h"

#include "tests/support/temp_dir.h"
#include "tools/failure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using testing::ElementsAre;
using testing::HasSubstr;

/// Gives serial numbers from 1 on and notes what it was asked; refuses the ids and serial numbers
/// that it is told to.
class FakeTarget : public AlarmTarget {
public:
    std::uint32_t raise(const AlarmReport& report) override { return note("raise", report); }
    std::uint32_t reportEvent(const AlarmReport& report) override { return note("event", report); }

    void clear(std::uint32_t serial) override
    {
        asked.push_back("clear " + std::to_string(serial));
        refuseIf(refusedSerials.count(serial) != 0);
    }

    std::vector<std::string> asked;
    std::set<std::uint64_t> refusedIds;
    std::set<std::uint32_t> refusedSerials;
    Failure::Kind kind = Failure::Kind::Refused;

private:
    void refuseIf(bool refused) const
    {
        if (refused) {
            throw Failure(kind, "no\x1B", "do better");
        }
    }

    std::uint32_t note(const std::string& what, const AlarmReport& report)
    {
        asked.push_back(what + " " + std::to_string(report.id) + " " + report.parameters);
        refuseIf(refusedIds.count(report.id) != 0);
        return ++serial_;
    }

    std::uint32_t serial_ = 0;
};

class ScenarioRunTest : public testing::Test {
protected:
    /// Returns whether every step succeeded.
    bool run(const std::string& steps, bool keepGoing = false)
    {
        ScenarioText report(out_, errors_);
        counts_ = run(steps, keepGoing, report);
        return counts_.failed == 0;
    }

    ScenarioCounts run(const std::string& steps, bool keepGoing, ScenarioReport& report)
    {
        const auto scenario =
            AlarmScenario::load(dir_.write("s.json", R"({"steps": [)" + steps + "]}"));
        ScenarioRun scenarioRun(
            target_,
            [this](std::chrono::milliseconds time) {
                target_.asked.push_back("pause " + std::to_string(time.count()));
            },
            report);
        return scenarioRun.run(scenario, keepGoing);
    }

    talvik::test::TempDir dir_;
    FakeTarget target_;
    std::ostringstream out_;
    std::ostringstream errors_;
    ScenarioCounts counts_;
};

TEST_F(ScenarioRunTest, DoesEveryStepAndSaysSo)
{
    EXPECT_TRUE(run(R"({"raise": {"id": "11", "params": ["a", "b"], "as": "x"}}, {"pauseMs": 20},
                       {"event": {"id": "12"}}, {"clear": "x"})"));

    EXPECT_THAT(target_.asked, ElementsAre("raise 11 a,b", "pause 20", "event 12 ", "clear 1"));
    EXPECT_EQ(out_.str(), "steps[0]: raised 11, serial number 1, as x\n"
                          "steps[1]: paused for 20 ms\n"
                          "steps[2]: reported 12, serial number 2\n"
                          "steps[3]: cleared x, serial number 1\n"
                          "done: 4 steps\n");
    EXPECT_EQ(errors_.str(), "");
}

TEST_F(ScenarioRunTest, ClearsTheAlarmOfEachRound)
{
    EXPECT_TRUE(run(R"({"repeat": {"times": 2, "steps": [{"repeat": {"times": 2, "steps": [
                        {"raise": {"id": "1", "as": "x"}}, {"clear": "x"}]}}]}})"));

    EXPECT_THAT(target_.asked, ElementsAre("raise 1 ", "clear 1", "raise 1 ", "clear 2", "raise 1 ",
                                           "clear 3", "raise 1 ", "clear 4"));
    EXPECT_THAT(out_.str(), HasSubstr("steps[0].repeat.steps[0].repeat.steps[1] "
                                      "(round 2 of 2, 1 of 2): cleared x, serial number 3\n"));
}

TEST_F(ScenarioRunTest, StopsAtTheFirstFailureAndSaysHowFarItCame)
{
    target_.refusedIds = {2};

    EXPECT_FALSE(run(
        R"({"pauseMs": 0}, {"repeat": {"times": 2, "steps": [{"raise": {"id": "2"}}]}}, {"pauseMs": 1})"));

    EXPECT_THAT(target_.asked, ElementsAre("pause 0", "raise 2 "));
    EXPECT_EQ(out_.str(), "steps[0]: paused for 0 ms\n");
    EXPECT_EQ(errors_.str(),
              "talvikctl: steps[1].repeat.steps[0] (round 1 of 2): no\\x1B; do better\n"
              "talvikctl: stopped after 1 of 4 steps; the others were not tried\n");
}

TEST_F(ScenarioRunTest, GoesOnWhenItIsToldTo)
{
    target_.refusedIds = {2};

    EXPECT_FALSE(
        run(R"({"raise": {"id": "2", "as": "x"}}, {"raise": {"id": "3", "as": "y"}}, {"clear": "x"},
                        {"clear": "y"})",
            true));

    EXPECT_THAT(target_.asked, ElementsAre("raise 2 ", "raise 3 ", "clear 1"));
    EXPECT_THAT(errors_.str(), HasSubstr("steps[2]: cannot clear x: it could not be raised"));
    EXPECT_THAT(errors_.str(), HasSubstr("talvikctl: 2 of 4 steps failed\n"));
    EXPECT_THAT(out_.str(), testing::Not(HasSubstr("done")));
}

TEST_F(ScenarioRunTest, ForgetsAnAlarmThatCouldNotBeCleared)
{
    target_.refusedSerials = {1};

    EXPECT_FALSE(run(
        R"({"repeat": {"times": 2, "steps": [{"raise": {"id": "1", "as": "x"}}, {"clear": "x"}]}})",
        true));

    EXPECT_THAT(target_.asked, ElementsAre("raise 1 ", "clear 1", "raise 1 ", "clear 2"));
    EXPECT_THAT(errors_.str(), HasSubstr("talvikctl: 1 of 4 steps failed\n"));
}

TEST_F(ScenarioRunTest, TellsARefusalFromWantOfAnAnswer)
{
    target_.refusedIds = {1};

    EXPECT_FALSE(run(R"({"raise": {"id": "1"}})"));
    EXPECT_FALSE(counts_.unanswered);
    EXPECT_TRUE(counts_.stopped);

    target_.kind = Failure::Kind::Connection;
    EXPECT_FALSE(run(R"({"raise": {"id": "1"}}, {"raise": {"id": "2"}})", true));
    EXPECT_TRUE(counts_.unanswered);
    EXPECT_FALSE(counts_.stopped);
}

TEST_F(ScenarioRunTest, IsAJsonObjectALine)
{
    target_.refusedIds = {2};
    ScenarioJson report(out_);

    const auto counts = run(R"({"repeat": {"times": 1, "steps": [
                                   {"raise": {"id": "18446744073709551615", "as": "x\u00e4"}}]}},
                               {"pauseMs": 3}, {"event": {"id": "2"}}, {"clear": "x\u00e4"})",
                            true, report);

    EXPECT_EQ(counts.failed, 1u);
    EXPECT_EQ(
        out_.str(),
        "{\"as\":\"x\\u00e4\",\"did\":\"raise\",\"id\":\"18446744073709551615\","
        "\"round\":\"round 1 of 1\",\"serial\":1,\"step\":\"steps[0].repeat.steps[0]\"}\n"
        "{\"did\":\"pause\",\"pauseMs\":3,\"step\":\"steps[1]\"}\n"
        "{\"advice\":\"do better\",\"failed\":\"event\",\"id\":\"2\",\"reason\":\"no\\u001b\","
        "\"step\":\"steps[2]\"}\n"
        "{\"as\":\"x\\u00e4\",\"did\":\"clear\",\"serial\":1,\"step\":\"steps[3]\"}\n"
        "{\"done\":3,\"failed\":1,\"stopped\":false,\"total\":4}\n");
}

}  // namespace
