#include "host/snmp/request_bridge.h"

#include "host/snmp/table_subtree.h"
#include "host/startup_error.h"
#include "tests/unit/host_snmp/request_kit.h"
#include "tests/unit/host_snmp/writable_table_kit.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using talvik::ObjectId;
using talvik::SnmpValue;
using talvik::Syntax;
using talvik::test::FakeTrapHandler;
using talvik::test::HandMadeRequest;
using testing::ElementsAre;
using testing::IsEmpty;

class RequestBridgeOn : public testing::Test {
protected:
    RequestBridgeOn()
    {
        state.rows[1] = {};
        bridge.serve(subtreeOf(table));
    }

    std::unique_ptr<talvik::Subtree> subtreeOf(const talvik::MibTable& served)
    {
        return std::make_unique<talvik::TableSubtree>(std::make_unique<talvik::TableSource>(
            served, std::make_unique<FakeTrapHandler>(state), [this] { return clock(); }));
    }

    /// From now on an exception stops every change before it reaches the handler: no cell can
    /// carry the port.
    void breakChanges() { table.columns[1].tag = 4096; }

    ObjectId name(unsigned long column, unsigned long row) const
    {
        auto id = table.id;
        id.insert(id.end(), {1, column, row});
        return id;
    }

    FakeTrapHandler::State state;
    talvik::MibTable table = talvik::test::trapTable();
    talvik::TableSource::Clock clock = &std::chrono::steady_clock::now;
    talvik::RequestBridge bridge;
};

constexpr int kFine = SNMP_ERR_NOERROR;

SnmpValue gauge(long number)
{
    return {Syntax::Gauge32, number, ""};
}

SnmpValue integer(long number)
{
    return {Syntax::Integer, number, ""};
}

TEST_F(RequestBridgeOn, OfSeveralSubtreesAllAreServedOrNone)
{
    auto free = table;
    free.id.back() += 1;
    std::vector<std::unique_ptr<talvik::Subtree>> subtrees;
    subtrees.push_back(subtreeOf(free));
    subtrees.push_back(subtreeOf(table));  // which is served already

    EXPECT_THROW(bridge.serve(std::move(subtrees)), talvik::StartupError);

    bridge.serve(subtreeOf(free));  // nobody has it
    HandMadeRequest request(table.id);
    request.add(name(2, 1));
    EXPECT_THAT(request.run(MODE_GET), ElementsAre(kFine));
}

TEST_F(RequestBridgeOn, AGetAnswersFromTheTable)
{
    HandMadeRequest request(table.id);
    request.add(name(2, 1));

    EXPECT_THAT(request.run(MODE_GET), ElementsAre(kFine));

    EXPECT_EQ(request.variable().type, ASN_GAUGE);
    EXPECT_EQ(*request.variable().val.integer, 162);
}

TEST_F(RequestBridgeOn, ASetGoesThroughAllPhasesWithOneChange)
{
    HandMadeRequest request(table.id);
    request.add(name(2, 5), gauge(1162)).add(name(3, 5), integer(4));

    EXPECT_THAT(request.run(MODE_SET_RESERVE1), ElementsAre(kFine, kFine));
    EXPECT_THAT(request.run(MODE_SET_RESERVE2), ElementsAre(kFine, kFine));
    EXPECT_THAT(state.calls, IsEmpty()) << "nothing before the action";
    EXPECT_THAT(request.run(MODE_SET_ACTION), ElementsAre(kFine, kFine));
    EXPECT_THAT(request.run(MODE_SET_COMMIT), ElementsAre(kFine, kFine));

    EXPECT_THAT(state.calls, ElementsAre("create 5 2=1162"));
}

TEST_F(RequestBridgeOn, AnErrorLandsOnItsVariableAndNothingIsDone)
{
    HandMadeRequest request(table.id);
    request.add(name(2, 5), gauge(1162)).add(name(3, 5), integer(5));

    EXPECT_THAT(request.run(MODE_SET_RESERVE1), ElementsAre(kFine, SNMP_ERR_WRONGVALUE));
    request.run(MODE_SET_FREE);

    EXPECT_THAT(state.calls, IsEmpty());
}

TEST_F(RequestBridgeOn, AFailedActionOfAnotherTakesTheChangeBack)
{
    HandMadeRequest request(table.id);
    request.add(name(2, 1), gauge(7));
    request.run(MODE_SET_RESERVE1);
    request.run(MODE_SET_RESERVE2);
    request.run(MODE_SET_ACTION);
    ASSERT_EQ(state.rows[1].port, 7u);

    EXPECT_THAT(request.run(MODE_SET_UNDO), ElementsAre(kFine));

    EXPECT_EQ(state.rows[1].port, 162u);
}

TEST_F(RequestBridgeOn, AFailedUndoIsTold)
{
    HandMadeRequest request(table.id);
    request.add(name(2, 1), gauge(7));
    request.run(MODE_SET_RESERVE1);
    request.run(MODE_SET_RESERVE2);
    request.run(MODE_SET_ACTION);
    state.result = [](const std::string&) { return -1; };

    EXPECT_THAT(request.run(MODE_SET_UNDO), ElementsAre(SNMP_ERR_UNDOFAILED));
    EXPECT_THAT(request.errorIndexes(), ElementsAre(0)) << "undoFailed names no variable";
}

TEST_F(RequestBridgeOn, AFailedUndoBehindAnotherTableKeepsTheIndexOfTheErrorThatIsTold)
{
    HandMadeRequest request(table.id, 2);
    request.add(name(2, 1), gauge(7));
    request.run(MODE_SET_RESERVE1);
    request.run(MODE_SET_RESERVE2);
    request.run(MODE_SET_ACTION);
    request.failElsewhere(SNMP_ERR_COMMITFAILED, 3);
    state.result = [](const std::string&) { return -1; };

    EXPECT_THAT(request.run(MODE_SET_UNDO), ElementsAre(SNMP_ERR_UNDOFAILED));
    EXPECT_THAT(request.errorIndexes(), ElementsAre(3));
}

TEST_F(RequestBridgeOn, NothingIsDoneOnceAnotherTableHasFailed)
{
    HandMadeRequest request(table.id, 2);
    request.add(name(2, 1), gauge(7));
    request.run(MODE_SET_RESERVE1);
    request.run(MODE_SET_RESERVE2);
    request.failElsewhere(SNMP_ERR_COMMITFAILED, 1);

    EXPECT_THAT(request.run(MODE_SET_ACTION), ElementsAre(kFine));
    EXPECT_THAT(request.run(MODE_SET_UNDO), ElementsAre(kFine));

    EXPECT_THAT(state.calls, IsEmpty());
}

TEST_F(RequestBridgeOn, AnExceptionWhileUndoingIsAFailedUndo)
{
    HandMadeRequest request(table.id);
    request.add(name(3, 1), integer(1)).add(name(2, 1), gauge(7));
    request.run(MODE_SET_RESERVE1);
    request.run(MODE_SET_RESERVE2);
    request.run(MODE_SET_ACTION);
    breakChanges();

    EXPECT_THAT(request.run(MODE_SET_UNDO), ElementsAre(SNMP_ERR_UNDOFAILED, kFine));

    EXPECT_THAT(request.errorIndexes(), ElementsAre(0, 2));
    EXPECT_EQ(state.rows[1].port, 7u);
}

TEST_F(RequestBridgeOn, AnExceptionInASetIsAGeneralErrorOfTheFirstVariable)
{
    HandMadeRequest request(table.id);
    request.add(name(3, 1), integer(1)).add(name(2, 1), gauge(7));
    request.run(MODE_SET_RESERVE1);
    request.run(MODE_SET_RESERVE2);
    breakChanges();

    EXPECT_THAT(request.run(MODE_SET_ACTION), ElementsAre(SNMP_ERR_GENERR, kFine));

    EXPECT_EQ(state.rows[1].port, 162u);
}

TEST_F(RequestBridgeOn, AnExceptionInAQueryIsAGeneralErrorOfTheFirstVariable)
{
    clock = []() -> std::chrono::steady_clock::time_point {
        throw std::runtime_error("no time today");
    };
    for (const auto mode : {static_cast<int>(MODE_GET), static_cast<int>(MODE_GETNEXT)}) {
        HandMadeRequest request(table.id);
        request.add(name(2, 1)).add(name(5, 1));

        EXPECT_THAT(request.run(mode), ElementsAre(SNMP_ERR_GENERR, kFine));
    }
}

TEST_F(RequestBridgeOn, FreeOrUndoWithoutAReserveDoesNothing)
{
    for (const int phase : {MODE_SET_FREE, MODE_SET_UNDO}) {
        HandMadeRequest request(table.id);
        request.add(name(2, 1), gauge(7));

        EXPECT_THAT(request.run(phase), ElementsAre(kFine));
    }
    EXPECT_THAT(state.calls, IsEmpty());
}

TEST_F(RequestBridgeOn, ATypeThatNoColumnHasIsAWrongType)
{
    HandMadeRequest request(table.id);
    request.add(name(2, 1));

    EXPECT_THAT(request.run(MODE_SET_RESERVE1), ElementsAre(SNMP_ERR_WRONGTYPE));
}

TEST_F(RequestBridgeOn, AChangeIsSeenByTheNextRequestAtOnce)
{
    HandMadeRequest before(table.id);
    before.add(name(2, 1)).run(MODE_GET);
    HandMadeRequest change(table.id);
    change.add(name(2, 1), gauge(7));
    for (const int phase :
         {MODE_SET_RESERVE1, MODE_SET_RESERVE2, MODE_SET_ACTION, MODE_SET_COMMIT}) {
        change.run(phase);
    }

    HandMadeRequest after(table.id);
    after.add(name(2, 1)).run(MODE_GET);

    EXPECT_EQ(*after.variable().val.integer, 7);
}

TEST_F(RequestBridgeOn, AllCallsForOneRequestCountOnce)
{
    HandMadeRequest get(table.id);
    get.numbered(1).add(name(2, 1)).add(name(3, 1)).run(MODE_GET);
    get.run(MODE_GET);
    HandMadeRequest set(table.id);
    set.numbered(2).add(name(2, 5), gauge(1162)).add(name(3, 5), integer(4));
    for (const int phase : {MODE_SET_RESERVE1, MODE_SET_RESERVE2, MODE_SET_ACTION}) {
        set.run(phase);
    }

    const auto counters = bridge.served().front().counters;

    EXPECT_EQ(counters.requests, 2U);
    EXPECT_EQ(counters.sets, 1U);
}

TEST_F(RequestBridgeOn, AnErrorOfARequestCountsOnce)
{
    HandMadeRequest set(table.id);
    set.numbered(1).add(name(99, 1), gauge(1)).add(name(99, 1), gauge(1));
    set.run(MODE_SET_RESERVE1);
    set.run(MODE_SET_FREE);

    const auto counters = bridge.served().front().counters;

    EXPECT_EQ(counters.requests, 1U);
    EXPECT_EQ(counters.errors, 1U);
}

}  // namespace
