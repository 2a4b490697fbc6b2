#include "tools/trap_import_run.h"

#include "tests/unit/tools/fake_snmp_agent.h"
#include "tools/trap_import_output.h"
#include "tools/trap_refusal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using namespace talvik::test;
using testing::ElementsAre;
using testing::HasSubstr;

using Kind = TrapChange::Kind;

TrapDestination row(std::uint32_t index, const std::string& address, std::uint32_t port = 162)
{
    TrapDestination destination;
    destination.index = index;
    destination.address = address;
    destination.port = port;
    destination.version = 2;
    destination.type = 1;
    destination.user = "--";
    return destination;
}

/// Adds row 3, changes a port in row 1 and removes row 2.
TrapImportPlan threeChanges()
{
    TrapImportPlan plan;
    plan.changes = {{Kind::Add, {}, row(3, "c")},
                    {Kind::Modify, row(1, "a"), row(1, "a", 10162)},
                    {Kind::Remove, row(2, "b"), {}}};
    plan.unchanged = 4;
    return plan;
}

class TrapImportRun : public testing::Test {
protected:
    TrapImportRun()
    {
        agent_.shownTable = trapEntry();
        agent_.shown[trapCellName(trap_column::kIndex, 2)] = numberCell(2);
    }

    /// The SET of that number, from 1, is refused.
    void refuse(std::size_t number)
    {
        agent_.onSet = [=](const auto&) {
            return agent_.sets.size() == number ? refusedWith(kStatusCommitFailed, 1)
                                                : SnmpAnswer{};
        };
    }

    std::vector<TrapChangeOutcome> run() { return carryOut(table_, threeChanges()); }

    static std::vector<std::string> resultsOf(const std::vector<TrapChangeOutcome>& outcomes)
    {
        std::vector<std::string> results;
        const auto json = trapImportJson("", false, {}, outcomes);
        for (const auto& change : json["changes"]) {
            results.push_back(change["result"].asString());
        }
        return results;
    }

    FakeSnmpAgent agent_;
    TrapTable table_{agent_};
};

TEST_F(TrapImportRun, MakesTheChangesInOrder)
{
    const auto outcomes = run();

    EXPECT_THAT(resultsOf(outcomes), ElementsAre("done", "done", "done"));
    EXPECT_EQ(failureOf(outcomes), nullptr);
    ASSERT_EQ(agent_.sets.size(), 3u);
    EXPECT_EQ(agent_.sets[0][0].oid, trapCellName(trap_column::kRowStatus, 3));
    ASSERT_EQ(agent_.sets[1].size(), 1u);
    EXPECT_EQ(agent_.sets[1][0].oid, trapCellName(trap_column::kPort, 1));
    EXPECT_EQ(agent_.sets[2][0].oid, trapCellName(trap_column::kRowStatus, 2));
    EXPECT_EQ(trapImportSummary(threeChanges(), outcomes),
              "done: 1 added, 1 modified, 1 removed, 4 unchanged\n");
}

TEST_F(TrapImportRun, StopsAtTheFirstFailure)
{
    refuse(2);

    const auto outcomes = run();

    EXPECT_THAT(resultsOf(outcomes), ElementsAre("done", "failed", "notTried"));
    EXPECT_EQ(agent_.sets.size(), 2u);
    ASSERT_NE(failureOf(outcomes), nullptr);
    EXPECT_THAT(failureOf(outcomes)->what(), HasSubstr("refused to change trap destination 1"));
    EXPECT_EQ(trapImportSummary(threeChanges(), outcomes),
              "stopped after 1 of 3 changes; run the command again to do the rest\n");
}

TEST_F(TrapImportRun, ShowsWhatCameOfEachChange)
{
    refuse(2);

    EXPECT_EQ(trapImportTable(run()),
              "CHANGE  INDEX  ADDRESS  PORT          VERSION  TYPE   USER  RESULT\n"
              "add     3      c        162           v2c      alarm  --    done\n"
              "modify  1      a        162 -> 10162  v2c      alarm  --    failed\n"
              "remove  2      b        162           v2c      alarm  --    not tried\n");
}

TEST_F(TrapImportRun, HasColoursOnATerminal)
{
    TableStyle style;
    style.colors = true;
    refuse(2);

    const auto text = trapImportTable(run(), style);

    EXPECT_THAT(text, HasSubstr(colored("done", Tone::Good)));
    EXPECT_THAT(text, HasSubstr(colored("failed", Tone::Bad)));
    EXPECT_THAT(text, HasSubstr(colored("not tried", Tone::Warning)));
}

TEST_F(TrapImportRun, TellsProgramsTheSame)
{
    refuse(2);

    const auto json = trapImportJson("udp:a", false, threeChanges(), run());

    EXPECT_EQ(json["agent"], "udp:a");
    EXPECT_EQ(json["dryRun"], false);
    EXPECT_EQ(json["unchanged"], 4u);
    EXPECT_EQ(json["others"], 0u);
    EXPECT_EQ(json["changes"][0]["change"], "add");
    EXPECT_EQ(json["changes"][0]["destination"]["index"], 3u);
    EXPECT_FALSE(json["changes"][0].isMember("before"));
    EXPECT_FALSE(json["changes"][0]["destination"].isMember("usable"));
    EXPECT_EQ(json["changes"][1]["before"]["port"], 162u);
    EXPECT_EQ(json["changes"][1]["destination"]["port"], 10162u);
    EXPECT_THAT(json["changes"][1]["reason"].asString(), HasSubstr("commitFailed"));
    EXPECT_THAT(json["changes"][1]["advice"].asString(), HasSubstr("its log"));
    EXPECT_EQ(json["changes"][2]["destination"]["address"], "b");
}

TEST_F(TrapImportRun, OnlyPlansInADryRun)
{
    const auto outcomes = plannedOnly(threeChanges());

    EXPECT_THAT(resultsOf(outcomes), ElementsAre("planned", "planned", "planned"));
    EXPECT_THAT(trapImportTable(outcomes), HasSubstr("  to do\n"));
    EXPECT_EQ(trapImportSummary(threeChanges(), outcomes),
              "nothing was changed: 1 to add, 1 to modify, 1 to remove, 4 unchanged\n");
}

TEST_F(TrapImportRun, SaysThatThereIsNothingToDo)
{
    TrapImportPlan plan;
    plan.unchanged = 2;
    plan.others = 1;

    EXPECT_EQ(trapImportTable({}), "");
    EXPECT_EQ(trapImportSummary(plan, {}), "nothing to do: 2 unchanged, 1 not in the list\n");
}

}  // namespace
