#include "host/snmp/batch_subtree.h"

#include "tests/unit/host_snmp/batch_kit.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using namespace talvik::test;
using talvik::ObjectId;
using testing::ElementsAre;
using testing::SizeIs;

/// Of a table that lies before the served one.
const ObjectId kElsewhere = {1, 3, 6, 1, 4, 1, 99999, 2, 7, 1, 1, 9, 1, 1, 4};

class BatchBulk : public testing::Test {
protected:
    /// The answers to a GETBULK, by variable.
    std::vector<std::vector<std::string>> bulk(const std::vector<ObjectId>& suffixes,
                                               int repetitions, long version = SNMP_VERSION_2c)
    {
        BatchRequest request(served.subtree, SNMP_MSG_GETBULK, version);
        std::vector<std::vector<std::string>> texts;
        for (const auto& shown : request.bulk(suffixes, repetitions)) {
            texts.push_back(textsOf(shown));
        }
        return texts;
    }

    BatchedTable served;
};

TEST_F(BatchBulk, RepeatsEachVariableByItself)
{
    served.with({1, 2, 4});

    EXPECT_THAT(
        bulk({{1, 1}, {1, 3, 1}, {1, 7, 1}}, 3),
        ElementsAre(ElementsAre("1.1.1 = item 1", "1.1.2 = item 2", "1.1.4 = item 4"),
                    ElementsAre("1.3.2 = 2", "1.3.4 = 4", "1.4.1 = " + std::to_string(kWide + 1)),
                    ElementsAre("1.7.2 = note", "1.7.4 = note", "end")));

    EXPECT_THAT(served.script.asked, ElementsAre("165 7.1.2.3.1.1"));
}

TEST_F(BatchBulk, AnswersAVariableWithoutRepetitionsOnce)
{
    served.with({1, 2});

    EXPECT_THAT(bulk({{1, 1}}, 1), ElementsAre(ElementsAre("1.1.1 = item 1")));
}

TEST_F(BatchBulk, AnswersNonRepeatersOnceAmongOthers)
{
    served.with({1, 2, 4});
    BatchRequest request(served.subtree, SNMP_MSG_GETBULK);

    const auto answers = request.bulk({{1, 1}, {1, 3}}, 3, 1);

    EXPECT_THAT(textsOf(answers[0]), ElementsAre("1.1.1 = item 1"));
    EXPECT_THAT(textsOf(answers[1]), ElementsAre("1.3.1 = 1", "1.3.2 = 2", "1.3.4 = 4"));
}

TEST_F(BatchBulk, LeavesWhatLiesBehindTheTableToOthers)
{
    served.with({1, 2});

    EXPECT_THAT(bulk({{1, 7, 1}, {2}}, 3), ElementsAre(ElementsAre("1.7.2 = note", "end", "end"),
                                                       ElementsAre("end", "end", "end")));
}

TEST_F(BatchBulk, PassesOverTheSecretColumn)
{
    served.with({1});

    EXPECT_THAT(bulk({{1, 4}, {1, 6}}, 2),
                ElementsAre(ElementsAre("1.4.1 = " + std::to_string(kWide + 1), "1.7.1 = note"),
                            ElementsAre("1.7.1 = note", "end")));
}

TEST_F(BatchBulk, LooksForNothingThatTheAnswerHasNoRoomFor)
{
    for (std::uint32_t index = 1; index <= 1000; ++index) {
        served.with({index});
    }

    const auto column = bulk({{1, 1}}, 1000).front();

    ASSERT_THAT(column, SizeIs(1000));
    EXPECT_EQ(column.front(), "1.1.1 = item 1");
    EXPECT_EQ(column.back(), "no room");
    EXPECT_THAT(served.script.asked, SizeIs(1)) << "50 rows are more than enough";
}

TEST_F(BatchBulk, TakesNoRoomForWhatOthersAnswer)
{
    for (std::uint32_t index = 1; index <= 1000; ++index) {
        served.with({index});
    }
    const auto alone = bulk({{1, 1}}, 1000).front();

    const auto answers = bulk({{2, 4711, 4711, 4711, 4711, 4711}, {1, 1}}, 1000);

    EXPECT_THAT(answers[0], testing::Each("end"));
    EXPECT_EQ(answers[1], alone);
}

TEST_F(BatchBulk, FailsOnceForAllVariables)
{
    served.script.instead = [](BatchPackage&) { return 7; };

    const auto answers = bulk({{1, 1}, {1, 3}}, 5);

    EXPECT_EQ(answers[0].front(), "genErr");
    EXPECT_EQ(answers[1].front(), "genErr");
    EXPECT_THAT(served.script.asked, SizeIs(1));
}

TEST_F(BatchBulk, FailsWhereItsKnowledgeEnds)
{
    served.with({1, 2, 3});
    served.script.bulk = 2;
    ASSERT_THAT(bulk({{1, 1}}, 2).front(), ElementsAre("1.1.1 = item 1", "1.1.2 = item 2"));
    served.script.instead = [](BatchPackage&) { return 7; };

    EXPECT_THAT(bulk({{1, 1}}, 4).front(),
                ElementsAre("1.1.1 = item 1", "1.1.2 = item 2", "genErr", "end"));
}

class BatchSubtreePassedBy : public testing::Test {
protected:
    BatchSubtreePassedBy()
    {
        served.script.instead = [](BatchPackage&) { return 7; };
    }

    /// What a GETNEXT of `named` comes to when it reaches the table.
    std::string arrive(const ObjectId& named)
    {
        BatchRequest request(served.subtree, SNMP_MSG_GETNEXT);
        return textOf(request.naming(named).call({ObjectId()}).front());
    }

    BatchedTable served;
};

TEST_F(BatchSubtreePassedBy, IsLeftOutWhenItCannotBeRead)
{
    EXPECT_EQ(arrive(kElsewhere), "end");
}

TEST_F(BatchSubtreePassedBy, IsShownWhenItCanBeRead)
{
    served.script.instead = nullptr;
    served.with({1});

    EXPECT_EQ(arrive(kElsewhere), "1.1.1 = item 1");
}

TEST_F(BatchSubtreePassedBy, FailsForWhoAskedForIt)
{
    auto within = served.mib.id;
    within.insert(within.end(), {1, 1, 4});

    EXPECT_EQ(arrive({1, 3, 6}), "genErr") << "it lies in what was asked for";
    EXPECT_EQ(arrive(served.mib.id), "genErr");
    EXPECT_EQ(arrive(within), "genErr");
}

TEST_F(BatchSubtreePassedBy, GoesByThePlaceOfEachVariable)
{
    BatchRequest request(served.subtree, SNMP_MSG_GETNEXT);
    request.naming(kElsewhere).naming(served.mib.id);

    EXPECT_THAT(textsOf(request.call({ObjectId(), ObjectId()})), ElementsAre("end", "genErr"));
}

TEST_F(BatchSubtreePassedBy, FailsInALaterCallOfTheSameGetBulk)
{
    BatchRequest passing(served.subtree, SNMP_MSG_GETBULK);
    passing.naming(kElsewhere);
    ASSERT_EQ(textOf(passing.bulk({ObjectId()}, 2).front().front()), "end");

    passing.naming(served.mib.id);
    const auto answers = passing.bulk({ObjectId(), ObjectId()}, 2);

    EXPECT_EQ(textOf(answers[0].front()), "end");
    EXPECT_EQ(textOf(answers[1].front()), "genErr") << "and not as if the table were empty";
    EXPECT_THAT(served.script.asked, SizeIs(1));
}

}  // namespace
