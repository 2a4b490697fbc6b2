#include "tools/trap_import_plan.h"

#include "tools/failure.h"
#include "tools/trap_import_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using testing::ElementsAre;
using testing::IsEmpty;

using Rows = std::vector<TrapDestination>;

/// Of a list: what is not named is left out.
TrapDestination wanted(const std::string& address, std::uint32_t index = 0)
{
    TrapDestination destination;
    destination.index = index;
    destination.address = address;
    destination.port = 162;
    return destination;
}

/// Of an agent.
TrapDestination row(std::uint32_t index, const std::string& address, std::uint32_t version = 2,
                    const std::string& user = "--")
{
    auto destination = wanted(address, index);
    destination.version = version;
    destination.type = 1;
    destination.user = user;
    return destination;
}

std::string textOf(const TrapChange& change)
{
    const auto text = [](const TrapDestination& values) {
        return std::to_string(values.index) + " " + *values.address + " v" +
               std::to_string(*values.version) + " " + *values.user;
    };
    switch (change.kind) {
    case TrapChange::Kind::Add:
        return "add " + text(change.after);
    case TrapChange::Kind::Modify:
        return "modify " + text(change.before) + " to " + text(change.after);
    case TrapChange::Kind::Remove:
        break;
    }
    return "remove " + text(change.before);
}

std::vector<std::string> changesOf(const Rows& list, const Rows& rows, bool replace = false)
{
    std::vector<std::string> texts;
    for (const auto& change : planTrapImport(list, rows, replace, "there").changes) {
        texts.push_back(textOf(change));
    }
    return texts;
}

Rows rowsUpTo(std::uint32_t count)
{
    Rows rows;
    for (std::uint32_t index = 1; index <= count; ++index) {
        rows.push_back(row(index, "r" + std::to_string(index)));
    }
    return rows;
}

TEST(TrapImportPlan, GivesANewRowWhatAddGivesIt)
{
    EXPECT_THAT(changesOf({wanted("a")}, {}), ElementsAre("add 1 a v2 --"));
}

TEST(TrapImportPlan, LeavesWhatTheListLeavesOut)
{
    const auto plan =
        planTrapImport({wanted("a")}, {row(4, "a", 3, "me"), row(5, "b")}, false, "there");

    EXPECT_THAT(plan.changes, IsEmpty());
    EXPECT_EQ(plan.unchanged, 1u);
    EXPECT_EQ(plan.others, 1u);
}

TEST(TrapImportPlan, SetsWhatDiffersAndNothingElse)
{
    auto list = wanted("A.");
    list.user = "you";
    const auto plan = planTrapImport({list}, {row(4, "a", 3, "me")}, false, "there");

    ASSERT_EQ(plan.changes.size(), 1u);
    EXPECT_EQ(textOf(plan.changes[0]), "modify 4 a v3 me to 4 a v3 you");
    const auto values = changedValues(plan.changes[0]);
    EXPECT_EQ(values.index, 4u);
    EXPECT_EQ(values.user, "you");
    EXPECT_FALSE(values.address || values.port || values.version || values.type);
}

TEST(TrapImportPlan, KnowsAReceiverByAddressAndPortWhateverItsIndex)
{
    EXPECT_THAT(changesOf({row(1, "a")}, {row(9, "a")}), IsEmpty());
    EXPECT_THAT(changesOf({row(1, "a")}, {row(9, "a")}, true), IsEmpty());
    auto other = row(1, "a");
    other.port = 163;
    EXPECT_THAT(changesOf({row(1, "a")}, {other}), ElementsAre("add 2 a v2 --"));
}

TEST(TrapImportPlan, TakesOfSeveralRowsThatOfTheIndexOrTheFirst)
{
    const Rows rows = {row(2, "a"), row(5, "a"), row(6, "a")};

    EXPECT_THAT(changesOf({row(5, "a", 3)}, rows), ElementsAre("modify 5 a v2 -- to 5 a v3 --"));
    EXPECT_THAT(changesOf({row(1, "a", 3)}, rows), ElementsAre("modify 2 a v2 -- to 2 a v3 --"));
    EXPECT_THAT(changesOf({row(5, "a")}, rows, true),
                ElementsAre("remove 2 a v2 --", "remove 6 a v2 --"));
}

TEST(TrapImportPlan, PairsRowsOfOneReceiverByTheirIndexes)
{
    const Rows rows = {row(2, "a"), row(5, "a", 3)};

    EXPECT_THAT(changesOf(rows, rows, true), IsEmpty());
    EXPECT_THAT(changesOf({rows[1], rows[0]}, rows, true), IsEmpty());
    EXPECT_THAT(changesOf({row(1, "a"), row(2, "a", 3)}, rows, true),
                ElementsAre("modify 5 a v3 -- to 5 a v2 --", "modify 2 a v2 -- to 2 a v3 --"));
    EXPECT_THAT(changesOf(rows, {row(5, "a")}, true),
                ElementsAre("add 2 a v2 --", "modify 5 a v2 -- to 5 a v3 --"));
    EXPECT_THAT(changesOf(rows, {}), ElementsAre("add 2 a v2 --", "add 5 a v3 --"));
}

TEST(TrapImportPlan, GivesTheIndexesOfTheListWhereTheyAreFree)
{
    EXPECT_THAT(changesOf({wanted("x"), row(1, "a"), row(3, "c"), row(2, "b")}, {row(1, "z")}),
                ElementsAre("add 4 x v2 --", "add 5 a v2 --", "add 3 c v2 --", "add 2 b v2 --"));
}

TEST(TrapImportPlan, ReplacingChangesTheRowOfAnIndexIntoItsNewReceiver)
{
    EXPECT_THAT(changesOf({wanted("a", 1)}, {row(1, "z", 3, "me")}, true),
                ElementsAre("modify 1 z v3 me to 1 a v2 --"));
    EXPECT_THAT(changesOf({wanted("a", 1), wanted("z")}, {row(1, "z")}, true),
                ElementsAre("add 2 a v2 --"));
}

TEST(TrapImportPlan, AddsThenModifiesThenRemoves)
{
    EXPECT_THAT(changesOf({row(2, "b", 3), row(7, "c")}, {row(1, "a"), row(2, "b")}, true),
                ElementsAre("add 7 c v2 --", "modify 2 b v2 -- to 2 b v3 --", "remove 1 a v2 --"));
}

TEST(TrapImportPlan, FillsTheTableToItsLastRow)
{
    const auto plan = planTrapImport({wanted("a")}, rowsUpTo(4095), false, "there");

    ASSERT_EQ(plan.changes.size(), 1u);
    EXPECT_EQ(plan.changes[0].after.index, 4096u);
    EXPECT_EQ(plan.others, 4095u);
}

TEST(TrapImportPlan, RefusesWhatDoesNotFit)
{
    EXPECT_THAT([] { planTrapImport({wanted("a")}, rowsUpTo(4096), false, "there"); },
                testing::ThrowsMessage<Failure>(
                    "there has 4096 trap destinations and room for 4096; the list would add 1"));
}

TEST(TrapImportPlan, ReplacingInAFullTableNeedsNoMoreRoom)
{
    const auto plan =
        planTrapImport({wanted("a"), wanted("b"), wanted("r3")}, rowsUpTo(4095), true, "there");

    ASSERT_EQ(plan.changes.size(), 2u + 4093u);
    EXPECT_EQ(textOf(plan.changes[0]), "add 4096 a v2 --");
    EXPECT_EQ(textOf(plan.changes[1]), "modify 1 r1 v2 -- to 1 b v2 --");
    EXPECT_EQ(textOf(plan.changes[2]), "remove 2 r2 v2 --");
    EXPECT_EQ(plan.unchanged, 1u);
}

TEST(TrapImportPlan, RefusesRowsThatAreNotShownWhole)
{
    using Hide = void (*)(TrapDestination&);
    const Hide hidden[] = {
        [](auto& values) { values.address.reset(); }, [](auto& values) { values.port.reset(); },
        [](auto& values) { values.version.reset(); }, [](auto& values) { values.type.reset(); },
        [](auto& values) { values.user.reset(); }};
    for (const auto hide : hidden) {
        auto partly = row(4, "a");
        hide(partly);
        EXPECT_THAT([&] { planTrapImport({}, {partly}, false, "there"); },
                    testing::ThrowsMessage<Failure>(
                        "there does not show all columns of trap destination 4"));
    }
}

TEST(TrapImportPlan, OnceCarriedOutLeavesNothingToDo)
{
    const Rows list = {wanted("x"), row(1, "a"), row(3, "c", 3, "me"), wanted("z", 9)};
    for (const bool replace : {false, true}) {
        Rows rows = {row(1, "z"), row(2, "y"), row(3, "w")};
        for (const auto& change : planTrapImport(list, rows, replace, "there").changes) {
            if (change.kind != TrapChange::Kind::Add) {
                rows.erase(std::find_if(rows.begin(), rows.end(), [&](const auto& one) {
                    return one.index == change.before.index;
                }));
            }
            if (change.kind != TrapChange::Kind::Remove) {
                rows.push_back(change.after);
            }
        }
        EXPECT_EQ(rows.size(), replace ? 4u : 6u);
        EXPECT_THAT(changesOf(list, rows, replace), IsEmpty());
    }
}

}  // namespace
