#include "host/snmp/batch_table.h"

#include "host/startup_error.h"
#include "tests/unit/host_snmp/batch_kit.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <new>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace talvik::test;
using talvik::BatchTable;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kGet = 160;
constexpr int kGetNext = 161;
constexpr int kGetBulk = 165;
constexpr std::uint32_t kGreatest = std::numeric_limits<std::uint32_t>::max();

class BatchTableOf : public testing::Test {
protected:
    static BatchTable::ContextSource contextOf(int kind)
    {
        return [kind] {
            using Operation = CKEL_SnmpContext::Operation;
            CKEL_SnmpContext context;
            context.pduType = kind;
            context.operation = kind == kGet       ? Operation::Get
                                : kind == kGetBulk ? Operation::GetBulk
                                                   : Operation::GetNext;
            return context;
        };
    }

    /// The index of the row; "none" or "failed".
    static std::string textOf(const BatchTable::Answer& answer)
    {
        switch (answer.kind) {
        case BatchTable::Answer::Kind::Row:
            return std::to_string(answer.batch->indexes()[answer.row]);
        case BatchTable::Answer::Kind::None:
            return "none";
        default:
            return "failed";
        }
    }

    std::string at(BatchTable::Request& request, std::uint32_t index)
    {
        return textOf(served.table->rowAt(request, contextOf(kGet), 1, index));
    }

    std::string behind(BatchTable::Request& request, std::uint64_t after, int kind = kGetNext)
    {
        return textOf(served.table->rowBehind(request, contextOf(kind), 1, after));
    }

    /// As above, in a request of its own.
    std::string at(std::uint32_t index)
    {
        auto request = served.table->begin();
        return at(request, index);
    }

    std::string behind(std::uint64_t after, int kind = kGetNext)
    {
        auto request = served.table->begin();
        return behind(request, after, kind);
    }

    const std::vector<std::string>& asked() const { return served.script.asked; }

    BatchedTable served{{std::size_t{64} << 20U, 1000ms}};
};

TEST_F(BatchTableOf, RowsAsksForAGetByTheRowItself)
{
    served.with({1, 5, 4294967295});

    EXPECT_EQ(at(1), "1");
    EXPECT_EQ(at(5), "5");
    EXPECT_EQ(at(kGreatest), "4294967295");

    EXPECT_THAT(asked(), ElementsAre("160 7.1.2.3.1.1.1", "160 7.1.2.3.1.1.5",
                                     "160 7.1.2.3.1.1.4294967295"));
}

TEST_F(BatchTableOf, RowsAsksForOthersByTheRowBefore)
{
    served.with({1, 5});

    EXPECT_EQ(behind(1), "5");
    EXPECT_EQ(behind(kGreatest, kGetBulk), "none");

    EXPECT_THAT(asked(), ElementsAre("161 7.1.2.3.1.1.1"))
        << "the end behind 5 is known from the first";
}

TEST_F(BatchTableOf, RowsAsksFromTheFrontWithoutAKey)
{
    served.with({1, 5});

    EXPECT_EQ(behind(0), "1");
    served.table->dropRows();
    EXPECT_EQ(behind(0, kGetBulk), "1");

    EXPECT_THAT(asked(), ElementsAre("161 7.1.2.3.1.1", "165 7.1.2.3.1.1"));
}

TEST_F(BatchTableOf, RowsAsksBehindTheGreatestIndexToo)
{
    EXPECT_EQ(behind(kGreatest), "none");

    EXPECT_THAT(asked(), ElementsAre("161 7.1.2.3.1.1.4294967295"));
}

TEST_F(BatchTableOf, RowsTellsTheColumnToTheHandler)
{
    served.with({5});
    auto request = served.table->begin();

    served.table->rowBehind(request, contextOf(kGetNext), 7, 3);

    EXPECT_THAT(asked(), ElementsAre("161 7.1.2.3.1.7.3"));
}

TEST_F(BatchTableOf, RowsGoesOnWhereItsKnowledgeEnds)
{
    served.with({2, 5, 9});
    ASSERT_EQ(behind(0), "2");
    served.table->rowIsGone(2);
    served.script.rows.erase(2);

    EXPECT_EQ(behind(0), "5");

    EXPECT_THAT(asked(), ElementsAre("161 7.1.2.3.1.1", "161 7.1.2.3.1.1.2"));
}

TEST_F(BatchTableOf, RowsKnowsFromAMissWhatLiesBehind)
{
    served.with({2, 9});
    ASSERT_EQ(at(4), "none");

    EXPECT_EQ(at(8), "none");
    EXPECT_EQ(at(9), "9");
    EXPECT_EQ(behind(5), "9");

    EXPECT_THAT(asked(), SizeIs(1));
}

TEST_F(BatchTableOf, RowsHasNoneWithIndexZero)
{
    served.with({1});

    EXPECT_EQ(at(0), "none");

    EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(BatchTableOf, RowsServeForTheirLifetime)
{
    served.with({1});
    ASSERT_EQ(at(1), "1");

    served.now += 999ms;
    EXPECT_EQ(at(1), "1");
    EXPECT_THAT(asked(), SizeIs(1));
    served.now += 1ms;
    EXPECT_EQ(at(1), "1");
    EXPECT_THAT(asked(), SizeIs(2));
}

TEST_F(BatchTableOf, RowsWithoutALifetimeServeTheirRequestOnly)
{
    auto mib = batchedTable();
    mib.answerLifetime = 0ms;
    BatchedTable brief({}, mib);
    brief.with({1, 2});
    BatchRequest request(brief.subtree, SNMP_MSG_GETBULK);

    EXPECT_THAT(textsOf(request.call({{1, 1}, {1, 3}})),
                ElementsAre("1.1.1 = item 1", "1.3.1 = 1"));
    EXPECT_THAT(brief.script.asked, SizeIs(1));
    brief.now += 1ms;
    brief.next({1, 1});

    EXPECT_THAT(brief.script.asked, SizeIs(2));
}

TEST_F(BatchTableOf, RowsTakesMemoryUpToItsLimitOnly)
{
    BatchedTable small({20000, 1000ms});
    for (std::uint32_t index = 1; index <= 1000; ++index) {
        small.with({index});
    }
    for (std::uint32_t index = 0; index < 1000; ++index) {
        small.next({1, 1, index});
        small.now += 10us;
    }

    small.table->begin();

    EXPECT_LE(small.table->kept().size(), 20000U);
    EXPECT_GT(small.table->kept().size(), 15000U);
}

TEST_F(BatchTableOf, RowsDropsWhatIsTooOldWhenToldTo)
{
    served.with({1});
    ASSERT_EQ(at(1), "1");
    ASSERT_EQ(served.table->nextExpiry(), served.now + 1000ms);

    served.now = served.table->nextExpiry();
    served.table->trim();

    EXPECT_EQ(served.table->kept().size(), 0U);
    EXPECT_EQ(served.table->nextExpiry(), BatchTable::Time::max());
}

TEST_F(BatchTableOf, RowsIsToldThatOneIsGone)
{
    served.with({1, 2, 3});
    ASSERT_EQ(behind(0, kGetBulk), "1");
    served.script.rows.erase(2);

    served.table->rowIsGone(2);

    EXPECT_EQ(at(2), "none");
    EXPECT_EQ(behind(1), "3");
    EXPECT_THAT(asked(), SizeIs(1));
}

TEST_F(BatchTableOf, RowsAsksNothingForARowThatIsKnownToBeGone)
{
    served.with({2, 5});
    ASSERT_EQ(at(2), "2");
    served.table->rowIsGone(2);

    EXPECT_EQ(at(2), "none");

    EXPECT_THAT(asked(), SizeIs(1));
}

TEST_F(BatchTableOf, RowsAreAsOldAsTheRequestThatAskedForThem)
{
    served.with({2, 5});
    served.script.before = [this] { served.now += 400ms; };

    ASSERT_EQ(at(2), "2");

    EXPECT_EQ(served.table->nextExpiry(), served.now + 600ms);
}

TEST_F(BatchTableOf, RowsIsToldThatOneExists)
{
    served.with({1, 3});
    ASSERT_EQ(behind(0, kGetBulk), "1");
    served.with({2, 4});

    served.table->rowExists(2);
    EXPECT_EQ(behind(1), "2");
    served.table->rowExists(4);
    EXPECT_EQ(behind(3), "4");
}

class BatchTableFails : public BatchTableOf {
protected:
    /// A query fails, with this line in the log, and the next one works again.
    void expectFailure(const std::string& reason)
    {
        const LoggerCapture log("host");
        auto request = served.table->begin();

        EXPECT_EQ(behind(request, 0), "failed");
        EXPECT_EQ(behind(request, 3), "failed");
        EXPECT_EQ(at(request, 5), "failed");

        EXPECT_THAT(asked(), SizeIs(1)) << "once a request";
        EXPECT_THAT(log.lines(),
                    testing::Contains(AllOf(HasSubstr("table itemTable (1.3.6.1.4.1.99999.2.7.1.2.3"
                                                      ")"),
                                            HasSubstr(reason), HasSubstr("answered genErr"))));
        served.script.instead = nullptr;
        served.with({2});
        EXPECT_EQ(behind(0), "2");
        EXPECT_THAT(log.lines(), testing::Contains(HasSubstr("works again after 1 failures")));
    }
};

TEST_F(BatchTableFails, WithTheHandlersResult)
{
    served.script.instead = [](BatchPackage&) { return 0x1000001; };
    expectFailure("the back end cannot be reached (0x1000001)");
}

TEST_F(BatchTableFails, WithTheHandlersException)
{
    served.script.instead = [](BatchPackage&) -> int { throw CKEL_Exception("no cells today"); };
    expectFailure("no cells today");
}

TEST_F(BatchTableFails, WithAnyException)
{
    served.script.instead = [](BatchPackage&) -> int { throw 7; };
    expectFailure("unexpected exception of an unknown type");
}

TEST_F(BatchTableFails, WithoutMemoryInTheHandler)
{
    served.script.instead = [](BatchPackage&) -> int { throw std::bad_alloc(); };
    expectFailure("unexpected exception");
}

TEST_F(BatchTableFails, WithAnEmptyAnswer)
{
    served.script.instead = [](BatchPackage&) { return 0; };
    expectFailure("no row that can be shown");
}

TEST_F(BatchTableFails, WithRowsWithoutAnIndex)
{
    served.script.instead = [](BatchPackage& answer) {
        RowBuilder().text(1, "who?").into(answer);
        return 0;
    };
    expectFailure("no row that can be shown");
}

TEST_F(BatchTableFails, WithRowsFromBeforeWhatWasAskedFor)
{
    served.with({6});
    served.script.instead = [](BatchPackage& answer) {
        itemRow(4).into(answer);
        return 0;
    };

    EXPECT_EQ(behind(4), "failed");
    EXPECT_EQ(behind(5, kGetBulk), "failed");
    EXPECT_EQ(at(5), "failed");
    served.script.instead = nullptr;

    EXPECT_EQ(behind(4), "6");
}

TEST_F(BatchTableFails, WithoutARowOfAFailedAnswerBeingKept)
{
    served.script.instead = [](BatchPackage& answer) {
        itemRow(4).into(answer);
        return 9;
    };
    ASSERT_EQ(behind(0), "failed");
    served.script.instead = nullptr;

    EXPECT_EQ(behind(0), "none");
}

TEST_F(BatchTableOf, AsksForManyRowsOnceARequestGoesFromRowToRow)
{
    served.with({1, 2, 3, 4, 5});
    auto request = served.table->begin();
    for (std::uint64_t after = 0; after < 5; ++after) {
        EXPECT_EQ(behind(request, after), std::to_string(after + 1));
    }

    EXPECT_THAT(asked(), ElementsAre("161 7.1.2.3.1.1", "161 7.1.2.3.1.1.1", "165 7.1.2.3.1.1.2"));
}

TEST_F(BatchTableFails, OnceItsRowsTakeTooLong)
{
    const LoggerCapture log("host");
    served.with({1, 2, 3, 4, 5});
    served.script.before = [this] { served.now += 500ms; };
    auto request = served.table->begin();
    EXPECT_EQ(behind(request, 0), "1");
    EXPECT_EQ(behind(request, 1), "2");

    EXPECT_EQ(behind(request, 2), "failed");

    EXPECT_EQ(behind(request, 1), "2") << "what is known is still shown";
    EXPECT_THAT(asked(), SizeIs(2));
    EXPECT_THAT(log.lines(),
                testing::Contains(HasSubstr("the rows of one request take longer than 1000 ms")));
    EXPECT_EQ(behind(3), "4") << "in the next request";
}

TEST_F(BatchTableFails, NoRequestForTimeThatPassedBeforeItAsked)
{
    served.with({1});
    auto request = served.table->begin();
    served.now += 1h;

    EXPECT_EQ(behind(request, 0), "1");
}

TEST_F(BatchTableFails, WithoutFloodingTheLog)
{
    const LoggerCapture log("host");
    served.script.instead = [](BatchPackage&) { return 9; };
    for (int i = 0; i < 500; ++i) {
        EXPECT_EQ(behind(0), "failed");
    }

    EXPECT_THAT(log.lines(), SizeIs(1));
    EXPECT_THAT(asked(), SizeIs(500));
}

TEST(BatchTableIsMade, ForOneNumberAsTheIndexOnly)
{
    const auto make = [](const talvik::MibTable& mib) {
        BatchScript script;
        BatchTable(mib, {7, 1, 2, 3}, std::make_unique<FakeBatchHandler>(script), {});
    };
    auto two = batchedTable();
    two.index = {0, 1};
    auto text = batchedTable();
    text.index = {0};

    EXPECT_NO_THROW(make(batchedTable()));
    EXPECT_THROW(make(two), talvik::StartupError);
    try {
        make(text);
        FAIL() << "no number";
    } catch (const talvik::StartupError& error) {
        EXPECT_THAT(error.what(), AllOf(HasSubstr("itemTable"), HasSubstr("one number")));
    }
}

}  // namespace
