#include "tools/trap_table.h"

#include "tests/unit/tools/fake_snmp_agent.h"
#include "tools/failure.h"
#include "tools/trap_refusal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using namespace talvik::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

ObjectId tableName()
{
    auto name = trapEntry();
    name.pop_back();
    return name;
}

TrapDestination wanted(std::uint32_t index = 0, const std::string& address = "192.0.2.1")
{
    TrapDestination row;
    row.index = index;
    row.address = address;
    row.port = 162;
    return row;
}

std::vector<std::uint32_t> columnsOf(const std::vector<SnmpCell>& cells)
{
    std::vector<std::uint32_t> columns;
    for (const auto& cell : cells) {
        columns.push_back(cell.oid.at(trapEntry().size()));
    }
    return columns;
}

class TrapTableOf : public testing::Test {
protected:
    TrapTableOf() { agent_.shownTable = tableName(); }

    /// A row as the agent shows it.
    void show(std::uint32_t index, const std::string& address = "192.0.2.1")
    {
        agent_.shown[trapCellName(trap_column::kUsable, index)] = textCell(address);
        agent_.shown[trapCellName(trap_column::kPort, index)] = numberCell(162);
        agent_.shown[trapCellName(trap_column::kIndex, index)] = numberCell(index);
        agent_.shown[trapCellName(trap_column::kVersion, index)] = numberCell(2);
        agent_.shown[trapCellName(trap_column::kAddress, index)] = textCell(address);
        agent_.shown[trapCellName(trap_column::kType, index)] = numberCell(1);
        agent_.shown[trapCellName(trap_column::kUser, index)] = textCell("--");
    }

    /// Every SET is refused so, after `tries` tries.
    void refuse(int status, std::size_t index, unsigned tries = 1)
    {
        agent_.onSet = [=](const auto&) {
            auto answer = refusedWith(status, index);
            answer.tries = tries;
            return answer;
        };
    }

    void loseAnswers(Failure::Kind kind)
    {
        agent_.onSet = [=](const auto&) -> SnmpAnswer {
            throw Failure(kind, "no answer from there", "make sure that it runs");
        };
    }

    template <typename Work>
    Failure failureOf(Work work)
    {
        try {
            work();
        } catch (const Failure& failure) {
            return failure;
        }
        throw std::logic_error("nothing failed");
    }

    std::string reasonOfRemoval(std::uint32_t index)
    {
        return failureOf([&] { table_.remove(index); }).what();
    }

    FakeSnmpAgent agent_;
    TrapTable table_{agent_};
};

class TrapTableList : public TrapTableOf {};
class TrapTableAdd : public TrapTableOf {};
class TrapTableModify : public TrapTableOf {};
class TrapTableRemove : public TrapTableOf {};

TEST_F(TrapTableList, HasTheRowsByIndex)
{
    show(7, "::1");
    show(2);
    agent_.shown.erase(trapCellName(trap_column::kUser, 2));

    const auto rows = table_.list();

    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].index, 2u);
    EXPECT_EQ(rows[0].user, std::nullopt);
    EXPECT_EQ(rows[1].index, 7u);
    EXPECT_EQ(rows[1].address, "::1");
    EXPECT_EQ(rows[1].usable, "::1");
    EXPECT_EQ(rows[1].port, 162u);
    EXPECT_EQ(rows[1].version, 2u);
    EXPECT_EQ(rows[1].type, 1u);
    EXPECT_EQ(rows[1].user, "--");
}

TEST_F(TrapTableList, TellsAnEmptyTableFromAMissingOne)
{
    EXPECT_TRUE(table_.list().empty());

    agent_.shownTable.clear();
    EXPECT_THAT(failureOf([&] { table_.list(); }).what(),
                HasSubstr("shows no table of trap destinations"));
}

TEST_F(TrapTableList, IsEmptyOverV1WhenNothingIsShown)
{
    agent_.v1 = true;

    EXPECT_TRUE(table_.list().empty());
}

TEST_F(TrapTableAdd, TakesTheLowestFreeIndexInOneRequest)
{
    show(1);
    show(3);

    EXPECT_EQ(table_.add(wanted()), 2u);

    ASSERT_EQ(agent_.sets.size(), 1u);
    EXPECT_THAT(columnsOf(agent_.sets[0]),
                ElementsAre(trap_column::kRowStatus, trap_column::kAddress, trap_column::kPort));
    EXPECT_EQ(agent_.sets[0][0].number, 4);
    EXPECT_EQ(agent_.sets[0][2].kind, SnmpCell::Kind::Unsigned);
    for (const auto& cell : agent_.sets[0]) {
        EXPECT_EQ(cell.oid.back(), 2u);
    }
}

TEST_F(TrapTableAdd, TriesTheNextIndexWhenSomebodyWasFaster)
{
    agent_.onSet = [&](const auto& sent) {
        const auto index = sent[0].oid.back();
        if (index < 3) {
            show(index, "192.0.2.99");
            return refusedWith(kStatusInconsistentValue, 1);
        }
        return SnmpAnswer{};
    };

    EXPECT_EQ(table_.add(wanted()), 3u);
}

TEST_F(TrapTableAdd, GivesUpWhenSomebodyIsAlwaysFaster)
{
    agent_.onSet = [&](const auto& sent) {
        show(sent[0].oid.back());
        return refusedWith(kStatusInconsistentValue, 1);
    };

    const auto failure = failureOf([&] { table_.add(wanted()); });

    EXPECT_THAT(failure.what(), HasSubstr("others took the free index each of 64 times"));
}

TEST_F(TrapTableAdd, TellsThatTheNamedIndexIsTaken)
{
    show(5);
    for (const bool v1 : {false, true}) {
        agent_.v1 = v1;
        refuse(v1 ? kStatusBadValue : kStatusInconsistentValue, 1);

        const auto failure = failureOf([&] { table_.add(wanted(5)); });

        EXPECT_THAT(failure.what(), StartsWith("there is a trap destination 5 at "));
    }
}

TEST_F(TrapTableAdd, KnowsItsOwnRowOnlyAfterALostAnswer)
{
    show(5);
    refuse(kStatusInconsistentValue, 1, 2);

    EXPECT_EQ(table_.add(wanted(5)), 5u);
    EXPECT_THAT(failureOf([&] { table_.add(wanted(5, "192.0.2.9")); }).what(),
                HasSubstr("already"));
}

TEST_F(TrapTableAdd, PassesOnWhatTheAgentSaysOfAValue)
{
    refuse(kStatusWrongValue, 2);

    const auto failure = failureOf([&] { table_.add(wanted()); });

    EXPECT_THAT(failure.what(),
                HasSubstr("refused to create trap destination 1: wrongValue at the address"));
}

TEST_F(TrapTableModify, SetsWhatIsNamedAndNoRowStatus)
{
    TrapDestination change;
    change.index = 9;
    change.version = 3;
    change.user = "monitor";

    table_.modify(change);

    ASSERT_EQ(agent_.sets.size(), 1u);
    EXPECT_THAT(columnsOf(agent_.sets[0]), ElementsAre(trap_column::kVersion, trap_column::kUser));
}

TEST_F(TrapTableModify, TellsThatThereIsNoSuchRow)
{
    show(1);
    for (const bool v1 : {false, true}) {
        agent_.v1 = v1;
        refuse(v1 ? kStatusNoSuchName : kStatusInconsistentName, 1);

        const auto failure = failureOf([&] { table_.modify(wanted(9)); });

        EXPECT_EQ(failure.kind(), Failure::Kind::UnknownRow);
        EXPECT_THAT(failure.what(), StartsWith("there is no trap destination 9 at "));
    }
}

TEST_F(TrapTableModify, TellsThatARowThatIsThereMayNotBeChanged)
{
    agent_.v1 = true;
    show(9);
    refuse(kStatusNoSuchName, 1);

    const auto failure = failureOf([&] { table_.modify(wanted(9)); });

    EXPECT_EQ(failure.kind(), Failure::Kind::Refused);
    EXPECT_THAT(failure.advice(), HasSubstr("SNMPv1 says no more"));
}

TEST_F(TrapTableRemove, DestroysTheRow)
{
    show(4);

    table_.remove(4);

    ASSERT_EQ(agent_.sets.size(), 1u);
    EXPECT_THAT(columnsOf(agent_.sets[0]), ElementsAre(trap_column::kRowStatus));
    EXPECT_EQ(agent_.sets[0][0].number, 6);
}

TEST_F(TrapTableRemove, SetsNothingForARowThatIsNotThere)
{
    show(1);
    for (const bool v1 : {false, true}) {
        agent_.v1 = v1;
        EXPECT_EQ(reasonOfRemoval(4), "there is no trap destination 4 at udp:192.0.2.1:1161");
    }
    EXPECT_TRUE(agent_.sets.empty());
}

TEST_F(TrapTableRemove, TellsThatTheTableIsNotShown)
{
    agent_.shownTable.clear();

    EXPECT_THAT(reasonOfRemoval(4), HasSubstr("shows no table of trap destinations"));
}

TEST_F(TrapTableRemove, DoesNotCallARowUnknownWhereV1ShowsNoTable)
{
    agent_.v1 = true;
    agent_.shown[{1, 3, 6, 1, 6, 3, 1}] = numberCell(1);  // behind the table

    const auto failure = failureOf([&] { table_.remove(4); });

    EXPECT_EQ(failure.kind(), Failure::Kind::Refused);
    EXPECT_STREQ(failure.what(),
                 "udp:192.0.2.1:1161 shows no trap destination 4, and no other one");
    EXPECT_THAT(failure.advice(), HasSubstr("does not tell an empty table from a hidden one"));
}

TEST_F(TrapTableModify, SaysThatAChangeWithoutAnAnswerMayHaveBeenMade)
{
    loseAnswers(Failure::Kind::NoAnswer);
    show(1);

    for (const auto& failure :
         {failureOf([&] { table_.add(wanted()); }), failureOf([&] { table_.modify(wanted(1)); }),
          failureOf([&] { table_.remove(1); })}) {
        EXPECT_EQ(failure.kind(), Failure::Kind::NoAnswer);
        EXPECT_STREQ(failure.what(), "no answer from there; the change may have been made "
                                     "nonetheless, check with talvikctl trap list");
        EXPECT_EQ(failure.advice(), "make sure that it runs");
    }
}

TEST_F(TrapTableModify, SaysNothingOfTheKindWhenTheRequestWasNeverSent)
{
    loseAnswers(Failure::Kind::Connection);

    const auto failure = failureOf([&] { table_.modify(wanted(1)); });

    EXPECT_STREQ(failure.what(), "no answer from there");
}

}  // namespace
