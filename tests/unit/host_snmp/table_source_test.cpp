#include "host/snmp/table_source.h"

#include "framework/kel_exception.h"
#include "framework/snmp_table_handler.h"
#include "host/snmp/request_context.h"
#include "host/startup_error.h"
#include "tests/unit/host_snmp/table_kit.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <stdexcept>

namespace {

using talvik::TableSource;
using Package = CTLVPackageV3<TLVMsgHeadV3>;

class ScriptedHandler : public CSnmpTableHandler {
public:
    explicit ScriptedHandler(std::function<int(Package&)> answer, bool wholeTable = true)
        : answer_(std::move(answer)),
          wholeTable_(wholeTable)
    {
    }

    int OnQueryTable(const CKEL_SnmpContext&, const Package& req, Package& rsp) override
    {
        EXPECT_TRUE(req.oRecords.empty());
        return answer_(rsp);
    }

    bool isWholeTable() override { return wholeTable_; }

private:
    std::function<int(Package&)> answer_;
    bool wholeTable_;
};

class TableSourceOf : public testing::Test {
protected:
    std::shared_ptr<const talvik::TableSnapshot> query(std::function<int(Package&)> answer)
    {
        TableSource source(table, std::make_unique<ScriptedHandler>(std::move(answer)));
        return source.query(CKEL_SnmpContext());
    }

    static int oneRow(Package& rows)
    {
        talvik::test::RowBuilder().text(1, "a").number(2, 1).into(rows);
        return 0;
    }

    talvik::MibTable table = talvik::test::smallTable();
};

TEST_F(TableSourceOf, AHandlerGivesItsRows)
{
    const auto snapshot = query(&oneRow);

    ASSERT_NE(snapshot, nullptr);
    EXPECT_EQ(snapshot->instances().size(), 2u);
}

TEST_F(TableSourceOf, AHandlerThatFailsGivesNothing)
{
    EXPECT_EQ(query([](Package& rows) { return oneRow(rows) + 7; }), nullptr);
    EXPECT_EQ(query([](Package&) -> int { throw CKEL_Exception("refused"); }), nullptr);
    EXPECT_EQ(query([](Package& rows) -> int {
                  oneRow(rows);
                  throw std::runtime_error("broken");
              }),
              nullptr);
    EXPECT_EQ(query([](Package&) -> int { throw 42; }), nullptr);
}

TEST_F(TableSourceOf, AHandlerThatFailedMayRecover)
{
    int calls = 0;
    TableSource source(table, std::make_unique<ScriptedHandler>(
                                  [&](Package& rows) { return ++calls == 1 ? -1 : oneRow(rows); }));

    EXPECT_EQ(source.query(CKEL_SnmpContext()), nullptr);
    EXPECT_NE(source.query(CKEL_SnmpContext()), nullptr);
}

TEST_F(TableSourceOf, AHandlerThatWantsBatchesIsRefused)
{
    EXPECT_THROW(TableSource(table, std::make_unique<ScriptedHandler>(&oneRow, false)),
                 talvik::StartupError);
}

class KeptAnswer : public TableSourceOf {
protected:
    KeptAnswer() { table.answerLifetime = std::chrono::milliseconds(1000); }

    std::shared_ptr<const talvik::TableSnapshot> ask() { return source.query(CKEL_SnmpContext()); }

    int calls = 0;
    std::chrono::steady_clock::time_point now;
    TableSource source{table, std::make_unique<ScriptedHandler>([this](Package& rows) {
                           ++calls;
                           return oneRow(rows) + result;
                       }),
                       [this] { return now; }};
    int result = 0;
};

TEST_F(KeptAnswer, ServesAgainUntilItIsTooOld)
{
    const auto first = ask();
    now += std::chrono::milliseconds(999);
    EXPECT_EQ(ask(), first);
    now += std::chrono::milliseconds(1);
    EXPECT_NE(ask(), first);
    EXPECT_EQ(calls, 2);
}

TEST_F(KeptAnswer, IsNotKeptWhenTheTableSaysNothingOfIt)
{
    table.answerLifetime = std::chrono::milliseconds(0);
    ask();
    ask();

    EXPECT_EQ(calls, 2);
}

TEST_F(KeptAnswer, IsNoFailure)
{
    result = 7;
    EXPECT_EQ(ask(), nullptr);
    result = 0;
    EXPECT_NE(ask(), nullptr);
}

TEST_F(KeptAnswer, IsDroppedByEveryChangeEvenOneThatFails)
{
    const CKEL_SnmpContext context;
    ask();
    EXPECT_FALSE(source.createRow(context, 1, {}).succeeded());
    ask();
    EXPECT_FALSE(source.modifyRow(context, 1, {}).succeeded());
    ask();
    EXPECT_FALSE(source.deleteRow(context, 1).succeeded());
    ask();

    EXPECT_EQ(calls, 4);
}

}  // namespace
