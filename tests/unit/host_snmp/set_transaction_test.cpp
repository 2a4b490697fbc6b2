#include "host/snmp/set_transaction.h"

#include "framework/result_codes.h"
#include "host/platform/trap_results.h"
#include "tests/unit/host_snmp/log_kit.h"
#include "tests/unit/host_snmp/writable_table_kit.h"

#include <gmock/gmock.h>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace {

using talvik::SetOutcome;
using talvik::SetTransaction;
using talvik::SnmpValue;
using talvik::Syntax;
using talvik::TableSource;
using talvik::WrittenVariable;
using talvik::test::FakeTrapHandler;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr long kActive = 1;
constexpr long kCreateAndGo = 4;
constexpr long kDestroy = 6;

WrittenVariable status(unsigned long row, long value)
{
    return {{1, 3, row}, SnmpValue{Syntax::Integer, value, ""}};
}

WrittenVariable port(unsigned long row, long value)
{
    return {{1, 2, row}, SnmpValue{Syntax::Gauge32, value, ""}};
}

WrittenVariable text(unsigned long column, unsigned long row, const std::string& value)
{
    return {{1, column, row}, SnmpValue{Syntax::OctetString, 0, value}};
}

WrittenVariable type(unsigned long row, long value)
{
    return {{1, 7, row}, SnmpValue{Syntax::Integer, value, ""}};
}

/// "error@position", or "fine".
std::string tell(const SetOutcome& outcome)
{
    static const char* const kNames[] = {"noCreation",
                                         "notWritable",
                                         "wrongType",
                                         "wrongLength",
                                         "wrongValue",
                                         "inconsistentName",
                                         "inconsistentValue",
                                         "resourceUnavailable",
                                         "commitFailed",
                                         "undoFailed",
                                         "genErr"};
    return outcome ? std::string(kNames[static_cast<int>(outcome->error)]) + "@" +
                         std::to_string(outcome->position)
                   : "fine";
}

class SetTransactionOf : public testing::Test {
protected:
    SetTransactionOf()
    {
        state.rows[1] = {"192.0.2.1", 162, 3, 7, "operator"};
        context.version = 1;
        context.user = "secret-community";
        context.source = "UDP: [127.0.0.1]:40000";
    }

    SetTransaction begin(std::vector<WrittenVariable> variables)
    {
        return {source, context, std::move(variables)};
    }

    /// All steps up to the change.
    std::string set(std::vector<WrittenVariable> variables)
    {
        auto transaction = begin(std::move(variables));
        auto outcome = transaction.check();
        outcome = outcome ? outcome : transaction.prepare();
        return tell(outcome ? outcome : transaction.act());
    }

    /// All steps, and back.
    std::string setAndUndo(std::vector<WrittenVariable> variables)
    {
        auto transaction = begin(std::move(variables));
        EXPECT_EQ(tell(transaction.check()), "fine");
        EXPECT_EQ(tell(transaction.prepare()), "fine");
        EXPECT_EQ(tell(transaction.act()), "fine");
        return tell(transaction.undo());
    }

    FakeTrapHandler::State state;
    CKEL_SnmpContext context;
    talvik::MibTable table = talvik::test::trapTable();
    TableSource source{table, std::make_unique<FakeTrapHandler>(state)};
    talvik::test::LoggerCapture log{"host"};
};

TEST_F(SetTransactionOf, ACreateSendsWhatIsNamedAndAsksNothing)
{
    EXPECT_EQ(set({text(6, 5, "192.0.2.9"), status(5, kCreateAndGo), port(5, 1162)}), "fine");

    EXPECT_THAT(state.calls, ElementsAre("create 5 6=192.0.2.9 2=1162"));
    EXPECT_EQ(state.queries, 0);
    EXPECT_THAT(
        log.lines(),
        ElementsAre(AllOf(HasSubstr("talvikTrapTable"), HasSubstr("v2c from UDP: [127.0.0.1]"),
                          HasSubstr("create row 5"), Not(HasSubstr("secret")))));
}

TEST_F(SetTransactionOf, AModifyFillsInWhatTheRowHasAndNeverTheAlias)
{
    EXPECT_EQ(set({type(1, 2)}), "fine");

    EXPECT_THAT(state.calls, ElementsAre("modify - 7=2 2=162 5=3 6=192.0.2.1 8=operator 4=1"));
}

TEST_F(SetTransactionOf, AModifyOfTheAliasLeavesOutWhatItStandsFor)
{
    EXPECT_EQ(set({text(1, 1, "192.0.2.7"), status(1, kActive)}), "fine");

    EXPECT_THAT(state.calls, ElementsAre("modify - 1=192.0.2.7 2=162 5=3 7=7 8=operator 4=1"));
}

TEST_F(SetTransactionOf, AModifyReadsTheRowAnewWhateverWasAnsweredBefore)
{
    ASSERT_NE(source.query(context), nullptr);
    state.rows[1].port = 4711;

    EXPECT_EQ(set({type(1, 2)}), "fine");

    EXPECT_THAT(state.calls, ElementsAre(HasSubstr("2=4711")));
}

TEST_F(SetTransactionOf, ADeleteSendsTheIndexOnly)
{
    EXPECT_EQ(set({status(1, kDestroy)}), "fine");

    EXPECT_THAT(state.calls, ElementsAre("delete - 4=1"));
    EXPECT_TRUE(state.rows.empty());
}

TEST_F(SetTransactionOf, ADeleteOfNoRowOrActiveOnItsOwnCallsNothing)
{
    EXPECT_EQ(set({status(2, kDestroy)}), "fine");
    EXPECT_EQ(set({status(1, kActive)}), "fine");

    EXPECT_THAT(state.calls, IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SetTransactionOf, ImpossibleVariablesIsRefusedBeforeAnythingIsAsked)
{
    EXPECT_EQ(set({port(1, 162), port(1, 0)}), "wrongValue@1");

    EXPECT_EQ(state.queries, 0);
}

TEST_F(SetTransactionOf, VariablesThatDoNotGoTogetherIsRefused)
{
    EXPECT_EQ(set({port(1, 1), type(2, 1)}), "inconsistentValue@1");
    EXPECT_EQ(set({port(1, 1), type(1, 1), port(1, 1)}), "inconsistentValue@2");
    EXPECT_EQ(set({status(1, kDestroy), port(1, 1)}), "inconsistentValue@1");
    EXPECT_EQ(set({port(1, 1), status(1, kDestroy)}), "inconsistentValue@0");
    EXPECT_EQ(set({text(6, 5, "192.0.2.1"), status(5, kCreateAndGo)}), "inconsistentValue@1");
    EXPECT_EQ(state.queries, 0);
    EXPECT_THAT(state.calls, IsEmpty());
}

TEST_F(SetTransactionOf, ARowThatIsNotThereIsRefused)
{
    EXPECT_EQ(set({port(2, 1), type(2, 1)}), "inconsistentName@0");
    EXPECT_EQ(set({status(2, kActive)}), "inconsistentValue@0");
    EXPECT_EQ(set({port(2, 1), status(2, kActive)}), "inconsistentName@0");
    EXPECT_EQ(set({status(2, kActive), port(2, 1)}), "inconsistentValue@0");
    EXPECT_THAT(state.calls, IsEmpty());
}

TEST_F(SetTransactionOf, ATableThatCannotBeReadIsAGeneralError)
{
    state.result = [](const std::string&) { return -1; };

    EXPECT_EQ(set({type(1, 2)}), "genErr@0");
}

TEST_F(SetTransactionOf, ARowThatCannotBeReadWholeIsNotReplaced)
{
    table.columns.back().tag = 9;  // a cell that no row has

    EXPECT_EQ(set({type(1, 2)}), "genErr@0");
    EXPECT_THAT(state.calls, IsEmpty());
}

struct Result {
    int code;
    const char* error;

    friend std::ostream& operator<<(std::ostream& os, const Result& row)
    {
        return os << std::hex << row.code;
    }
};

class SetResult : public SetTransactionOf, public testing::WithParamInterface<Result> {};

TEST_P(SetResult, OfTheHandlerBecomesAnErrorAtTheRowStatusAndOneLine)
{
    state.result = [](const std::string&) { return GetParam().code; };

    EXPECT_EQ(set({port(5, 1), status(5, kCreateAndGo)}), GetParam().error);

    EXPECT_THAT(log.lines(),
                ElementsAre(AllOf(HasSubstr("cannot create row 5"),
                                  HasSubstr(std::to_string(GetParam().code)),
                                  HasSubstr("[127.0.0.1]"), Not(HasSubstr("secret")))));
}

const Result kResults[] = {
    {talvik::result_code::kTrapRequestRefused, "inconsistentValue@1"},
    {talvik::trap_result::kIndexTaken, "inconsistentValue@1"},
    {talvik::trap_result::kIndexInvalid, "inconsistentValue@1"},
    {talvik::trap_result::kRefused, "inconsistentValue@1"},
    {talvik::trap_result::kIndexUnknown, "inconsistentName@1"},
    {talvik::trap_result::kListFull, "resourceUnavailable@1"},
    {talvik::trap_result::kStoreFailed, "commitFailed@1"},
    {talvik::result_code::kFailed, "commitFailed@1"},
    {7, "commitFailed@1"},
};

INSTANTIATE_TEST_SUITE_P(Handler, SetResult, testing::ValuesIn(kResults));

TEST_F(SetTransactionOf, AHandlerThatThrowsIsAGeneralError)
{
    state.result = [](const std::string& operation) -> int {
        return operation == "query" ? 0 : throw CKEL_Exception("broken");
    };

    EXPECT_EQ(set({type(1, 2)}), "genErr@0");
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("broken")));
}

TEST_F(SetTransactionOf, AChangeByAUserNamesTheUser)
{
    context.version = 3;
    context.user = "admin\nforged";

    EXPECT_EQ(set({type(1, 2)}), "fine");

    EXPECT_THAT(log.lines().front(), HasSubstr("user admin"));
}

TEST_F(SetTransactionOf, AnUndoOfACreateDeletesTheRow)
{
    EXPECT_EQ(setAndUndo({status(5, kCreateAndGo), port(5, 1)}), "fine");

    EXPECT_THAT(state.calls, ElementsAre("create 5 2=1", "delete - 4=5"));
    EXPECT_EQ(state.rows.count(5), 0u);
}

TEST_F(SetTransactionOf, AnUndoOfAModifyPutsTheOldRowBack)
{
    EXPECT_EQ(setAndUndo({text(1, 1, "192.0.2.7"), port(1, 9)}), "fine");

    EXPECT_EQ(state.calls.back(), "modify - 2=162 5=3 6=192.0.2.1 7=7 8=operator 4=1");
    EXPECT_EQ(state.rows[1].address, "192.0.2.1");
    EXPECT_EQ(state.rows[1].port, 162u);
}

TEST_F(SetTransactionOf, AnUndoOfADeleteCreatesTheRowAgain)
{
    EXPECT_EQ(setAndUndo({status(1, kDestroy)}), "fine");

    EXPECT_EQ(state.calls.back(), "create 1 2=162 5=3 6=192.0.2.1 7=7 8=operator");
    EXPECT_EQ(state.rows[1].user, "operator");
}

TEST_F(SetTransactionOf, AnUndoWithoutAChangeCallsNothing)
{
    state.result = [](const std::string& operation) { return operation == "query" ? 0 : -1; };
    auto transaction = begin({type(1, 2)});
    ASSERT_EQ(tell(transaction.check()), "fine");
    ASSERT_EQ(tell(transaction.prepare()), "fine");
    ASSERT_EQ(tell(transaction.act()), "commitFailed@0");

    EXPECT_EQ(tell(transaction.undo()), "fine");
    EXPECT_EQ(state.calls.size(), 1u);
}

TEST_F(SetTransactionOf, AnUndoThatFailsIsToldAndLogged)
{
    state.result = [](const std::string& operation) { return operation == "delete" ? -1 : 0; };

    EXPECT_EQ(setAndUndo({port(5, 1), status(5, kCreateAndGo)}), "undoFailed@1");

    EXPECT_THAT(log.lines().back(), HasSubstr("cannot take back: create row 5"));
}

}  // namespace
