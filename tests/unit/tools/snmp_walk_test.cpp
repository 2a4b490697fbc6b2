#include "tools/snmp_walk.h"

#include "tests/unit/tools/fake_snmp_agent.h"
#include "tools/failure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace talvik::test;
using talvik::ctl::Failure;
using talvik::ctl::walkTable;
using testing::HasSubstr;
using Kind = SnmpCell::Kind;

const ObjectId kEntry = {1, 3, 6, 1, 4, 1, 1};

ObjectId at(std::uint32_t column, std::uint32_t row)
{
    auto name = kEntry;
    name.push_back(column);
    name.push_back(row);
    return name;
}

SnmpCell cellAt(const ObjectId& name)
{
    auto cell = numberCell(0);
    cell.oid = name;
    return cell;
}

/// Columns 2 and 3 with the rows 1 to `rows`; the value is column times row.
void fill(FakeSnmpAgent& agent, std::uint32_t rows)
{
    for (std::uint32_t row = 1; row <= rows; ++row) {
        agent.shown[at(2, row)] = numberCell(std::int64_t{2} * row);
        agent.shown[at(3, row)] = numberCell(std::int64_t{3} * row);
    }
}

/// Answers every question with the same cells.
class StubbornAgent : public FakeSnmpAgent {
public:
    explicit StubbornAgent(std::vector<SnmpCell> cells) { answer_.cells = std::move(cells); }
    explicit StubbornAgent(int status) { answer_.status = status; }

    SnmpAnswer getBulk(const std::vector<ObjectId>&, unsigned) override
    {
        if (++reads > kMostReads) {
            throw std::logic_error("the walk does not end");
        }
        return answer_;
    }

private:
    static constexpr std::size_t kMostReads = 10;
    SnmpAnswer answer_;
};

std::string failureOf(FakeSnmpAgent& agent, const std::vector<std::uint32_t>& columns = {2, 3})
{
    try {
        walkTable(agent, kEntry, columns);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.kind(), Failure::Kind::Refused);
        EXPECT_NE(failure.advice(), "");
        return failure.what();
    }
    return "";
}

/// How the walk is asked: the version, and how many cells fit into an answer.
struct Manner {
    const char* name;
    bool v1;
    std::size_t cellsPerAnswer;

    friend std::ostream& operator<<(std::ostream& os, const Manner& row) { return os << row.name; }
};

class SnmpWalk : public testing::TestWithParam<Manner> {
protected:
    SnmpWalk()
    {
        agent_.v1 = GetParam().v1;
        agent_.cellsPerAnswer = GetParam().cellsPerAnswer;
    }

    FakeSnmpAgent agent_;
};

TEST_P(SnmpWalk, GathersTheCellsOfEachRow)
{
    fill(agent_, 100);
    agent_.shown[at(4, 1)] = numberCell(4);  // behind the columns asked for

    const auto rows = walkTable(agent_, kEntry, {2, 3});

    ASSERT_EQ(rows.size(), 100u);
    for (const auto& [index, row] : rows) {
        EXPECT_EQ(row.size(), 2u);
        EXPECT_EQ(row.at(2).number, 2 * index);
        EXPECT_EQ(row.at(3).number, 3 * index);
    }
}

TEST_P(SnmpWalk, EndsAtTheEndOfTheView)
{
    fill(agent_, 3);

    EXPECT_EQ(walkTable(agent_, kEntry, {2, 3}).size(), 3u);
}

TEST_P(SnmpWalk, FindsNothingInAnEmptyTable)
{
    EXPECT_TRUE(walkTable(agent_, kEntry, {2, 3}).empty());

    agent_.shown[{1, 3, 7}] = numberCell(0);
    EXPECT_TRUE(walkTable(agent_, kEntry, {2, 3}).empty());
}

TEST_P(SnmpWalk, LeavesOutACellThatIsNotShown)
{
    fill(agent_, 3);
    agent_.shown.erase(at(2, 2));
    agent_.shown.erase(at(3, 3));

    const auto rows = walkTable(agent_, kEntry, {2, 3});

    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows.at(1).size(), 2u);
    EXPECT_EQ(rows.at(2).count(2), 0u);
    EXPECT_EQ(rows.at(2).at(3).number, 6);
    EXPECT_EQ(rows.at(3).count(3), 0u);
}

INSTANTIATE_TEST_SUITE_P(Manners, SnmpWalk,
                         testing::ValuesIn(std::vector<Manner>{{"V1", true, 1000},
                                                               {"Bulk", false, 1000},
                                                               {"OddAnswers", false, 7},
                                                               {"Lines", false, 2}}),
                         [](const auto& row) { return row.param.name; });

TEST(SnmpWalkQuestions, AreFewWithBulk)
{
    FakeSnmpAgent agent;
    fill(agent, 350);

    walkTable(agent, kEntry, {2, 3});

    EXPECT_EQ(agent.reads, 11u);  // 35 rows an answer, and one that finds the end
}

TEST(SnmpWalkFailure, EndsWhenTheAnswersDoNotGoForward)
{
    StubbornAgent same({cellAt(at(2, 1)), cellAt(at(3, 1)), cellAt(at(2, 1)), cellAt(at(3, 2))});
    StubbornAgent back({cellAt(at(2, 5)), cellAt(at(3, 5)), cellAt(at(2, 4)), cellAt(at(3, 6))});
    StubbornAgent again({cellAt(at(2, 1)), cellAt(at(3, 1))});

    for (auto* agent : {&same, &back, &again}) {
        EXPECT_EQ(failureOf(*agent),
                  "udp:192.0.2.1:1161 does not go forward through the table: it would never end");
    }
}

TEST(SnmpWalkFailure, EndsWithFewerVariablesThanAskedFor)
{
    StubbornAgent none(std::vector<SnmpCell>{});
    StubbornAgent one({cellAt(at(2, 1))});

    EXPECT_THAT(failureOf(none), HasSubstr("fewer variables than it was asked for"));
    EXPECT_THAT(failureOf(one), HasSubstr("fewer variables than it was asked for"));
}

TEST(SnmpWalkFailure, NamesTheErrorOfTheAgent)
{
    StubbornAgent agent(talvik::ctl::kStatusGenErr);

    EXPECT_THAT(failureOf(agent), HasSubstr("refused to list the table (genErr)"));
}

TEST(SnmpWalkFailure, RefusesAnIndexOfSeveralNumbers)
{
    auto name = at(2, 1);
    name.push_back(1);
    StubbornAgent agent({cellAt(name), cellAt(at(3, 1))});

    EXPECT_THAT(failureOf(agent), HasSubstr("has rows whose index is not one number"));
}

TEST(SnmpWalkFailure, EndsATableWithoutAnEnd)
{
    /// The next row is always there.
    class Endless : public FakeSnmpAgent {
    public:
        SnmpAnswer getBulk(const std::vector<ObjectId>& names, unsigned repetitions) override
        {
            SnmpAnswer answer;
            for (unsigned line = 1; line <= repetitions; ++line) {
                const auto last = names[0].size() > kEntry.size() + 1 ? names[0].back() : 0;
                answer.cells.push_back(cellAt(at(2, last + line)));
            }
            return answer;
        }
    } agent;

    EXPECT_THAT(failureOf(agent, {2}), HasSubstr("gives more than 100000 rows"));
}

}  // namespace
