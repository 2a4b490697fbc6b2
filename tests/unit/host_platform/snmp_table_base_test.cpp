#include "platform/snmp_table_base.h"

#include "tests/unit/host_platform/table_engine_kit.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace talvik::test;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

TEST_F(TableEngine, AsksForOneRecordFromBeforeTheKeyOfAGet)
{
    serve({4, 5, 6});

    EXPECT_EQ(query(kGet, 5), 0);

    EXPECT_THAT(backEnd.asked, ElementsAre("4 1"));
    EXPECT_THAT(backEnd.commands, ElementsAre(77U));
    EXPECT_THAT(rows(), ElementsAre("5"));
}

TEST_F(TableEngine, AsksForOneRecordFromTheKeyOfAGetNext)
{
    serve({4, 5, 6});

    EXPECT_EQ(query(kGetNext, 5), 0);

    EXPECT_THAT(backEnd.asked, ElementsAre("5 1"));
    EXPECT_THAT(rows(), ElementsAre("6", "end")) << "the back end said that nothing follows";
}

TEST_F(TableEngine, AsksForFiftyRecordsFromTheKeyOfAGetBulk)
{
    std::vector<std::uint32_t> keys(60);
    for (std::uint32_t i = 0; i < keys.size(); ++i) {
        keys[i] = i + 1;
    }
    serve(keys);

    EXPECT_EQ(query(kGetBulk, 5), 0);

    EXPECT_THAT(backEnd.asked, ElementsAre("5 50"));
    EXPECT_THAT(rows(), SizeIs(50));
    EXPECT_EQ(rows().front(), "6");
    EXPECT_EQ(rows().back(), "55") << "no end: more records follow";
}

TEST_F(TableEngine, AsksFromTheFrontWithoutAKey)
{
    serve({4, 5});
    for (const int kind : {kGet, kGetNext, kGetBulk}) {
        EXPECT_EQ(query(kind), 0);
    }

    EXPECT_THAT(backEnd.asked, ElementsAre("0 1", "0 1", "0 50"));
    EXPECT_THAT(table.keys, testing::Each(CSnmpTableBase::INVALID_KEY));
    EXPECT_THAT(table.kinds, ElementsAre(kGet, kGetNext, kGetBulk));
}

TEST_F(TableEngine, AnswersAGetOfKeyZeroFromTheFront)
{
    serve({4});

    EXPECT_EQ(query(kGet, 0), 0);

    EXPECT_THAT(backEnd.asked, ElementsAre("0 1"));
    EXPECT_THAT(rows(), ElementsAre("4", "end"));
}

TEST_F(TableEngine, TakesTheGreatestKey)
{
    serve({4, 4294967295});

    EXPECT_EQ(query(kGet, 4294967295), 0);
    EXPECT_THAT(rows(), ElementsAre("4294967295", "end"));
    EXPECT_EQ(query(kGetNext, 4294967295), 0);
    EXPECT_THAT(rows(), ElementsAre("end"));

    EXPECT_THAT(backEnd.asked, ElementsAre("4294967294 1", "4294967295 1"));
}

TEST_F(TableEngine, EndsWithAnAnswerWithoutRecords)
{
    answerWith([](TablePackage&) {});

    EXPECT_EQ(query(kGetNext, 5), 0);

    EXPECT_THAT(rows(), ElementsAre("end"));
}

TEST_F(TableEngine, LooksAtNothingBehindAnEndMark)
{
    answerWith([](TablePackage& answer) {
        addRecord(answer, 6);
        talvik::appendEndMark(answer);
        addRecord(answer, 7);
    });

    EXPECT_EQ(query(kGetBulk, 5), 0);

    EXPECT_THAT(rows(), ElementsAre("6", "end"));
}

TEST_F(TableEngine, TakesNoMoreRowsThanItAskedFor)
{
    answerWith([](TablePackage& answer) {
        addRecord(answer, 6);
        addRecord(answer, 7);
        talvik::appendEndMark(answer);
    });

    EXPECT_EQ(query(kGetNext, 5), 0);

    EXPECT_THAT(rows(), ElementsAre("6")) << "no end: the next query goes on behind 6";
}

TEST_F(TableEngine, PassesRecordsThatYieldNoRowInBatches)
{
    serve({6, 7, 8, 9}, [](std::uint32_t key) { return key < 8 ? kNoRowTag : kNoMark; });
    for (const auto& [kind, key] : {std::pair(kGet, 6U), std::pair(kGetNext, 5U)}) {
        backEnd.asked.clear();

        EXPECT_EQ(query(kind, key), 0);

        EXPECT_THAT(rows(), ElementsAre("8"));
        EXPECT_THAT(backEnd.asked, ElementsAre("5 1", "6 50")) << "of kind " << kind;
    }
}

TEST_F(TableEngine, PassesRecordsThatMayNotBeShown)
{
    serve({6, 7, 8, 9}, [](std::uint32_t key) { return key < 8 ? kHiddenTag : kNoMark; });

    EXPECT_EQ(query(kGetNext, 5), 0);

    EXPECT_THAT(rows(), ElementsAre("8"));
}

TEST_F(TableEngine, EndsBehindRecordsThatYieldNoRow)
{
    serve({6, 7}, [](std::uint32_t) { return kNoRowTag; });

    EXPECT_EQ(query(kGetNext, 5), 0);

    EXPECT_THAT(rows(), ElementsAre("end"));
}

TEST_F(TableEngine, PassesRecordsWithoutAnyCell)
{
    answerWith([](TablePackage& answer) {
        RowBuilder().into(answer);
        addRecord(answer, 6);
    });

    EXPECT_EQ(query(kGetNext, 5), 0);

    EXPECT_THAT(rows(), ElementsAre("6"));
}

TEST_F(TableEngine, EndsARunOfRecordsThatYieldNoRowAtTheTimeLimit)
{
    std::uint32_t last = 5;
    backEnd.answering = [&](std::uint32_t, std::uint32_t, TablePackage& answer) {
        addRecord(answer, ++last, kNoRowTag);
        now += 500ms;
        return 0;
    };

    EXPECT_THAT(failureOf(kGetNext, 5),
                AllOf(HasSubstr("no row up to 9"), HasSubstr("time limit")));

    EXPECT_THAT(backEnd.asked, SizeIs(4));
}

TEST_F(TableEngine, AsksOnceHoweverLongThatTakes)
{
    backEnd.answering = [&](std::uint32_t, std::uint32_t, TablePackage& answer) {
        addRecord(answer, 6);
        now += 1h;
        return 0;
    };

    EXPECT_EQ(query(kGetNext, 5), 0);

    EXPECT_THAT(rows(), ElementsAre("6"));
}

class WholeTableEngine : public TableEngine {
protected:
    WholeTableEngine() { table.m_bWholeTable = true; }
};

TEST_F(WholeTableEngine, FetchesBatchByBatchUpToTheEnd)
{
    std::vector<std::uint32_t> keys(120);
    for (std::uint32_t i = 0; i < keys.size(); ++i) {
        keys[i] = 2 * i + 1;
    }
    serve(keys, [](std::uint32_t key) { return key == 3 ? kNoRowTag : kNoMark; });

    EXPECT_EQ(query(kGetNext), 0);

    EXPECT_THAT(backEnd.asked, ElementsAre("0 50", "99 50", "199 50"));
    EXPECT_THAT(rows(), SizeIs(119)) << "a whole table has no end mark";
    EXPECT_EQ(rows().back(), "239");
}

TEST_F(WholeTableEngine, FailsAtTheTimeLimit)
{
    std::uint32_t last = 0;
    backEnd.answering = [&](std::uint32_t, std::uint32_t, TablePackage& answer) {
        addRecord(answer, ++last);
        now += 500ms;
        return 0;
    };

    EXPECT_THAT(failureOf(kGetNext), HasSubstr("only up to 4"));
}

TEST_F(WholeTableEngine, FailsWithTheBackEnd)
{
    backEnd.answering = [](std::uint32_t, std::uint32_t, TablePackage&) { return 9; };

    EXPECT_EQ(query(kGetNext), 9);
}

TEST(TableBatch, AnEndMarkIsARecordWithItsCellAndNothingElseMatters)
{
    TablePackage package;
    talvik::appendEndMark(package);
    addRecord(package, 1, talvik::kEndMarkTag);
    addRecord(package, 1);

    EXPECT_TRUE(talvik::isEndMark(*package[0]));
    EXPECT_TRUE(talvik::isEndMark(*package[1]));
    EXPECT_FALSE(talvik::isEndMark(*package[2]));
}

}  // namespace
