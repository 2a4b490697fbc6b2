#include "host/snmp/request_bridge.h"

#include "host/snmp/table_subtree.h"
#include "host/snmp/varbind.h"
#include "tests/unit/host_snmp/writable_table_kit.h"

// After the above: net-snmp's headers leave names behind.
#include "host/snmp/net_snmp.h"

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
using testing::ElementsAre;
using testing::IsEmpty;

/// The agent library without any socket, once a process.
class AgentLibrary : public testing::Environment {
public:
    void SetUp() override
    {
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_NO_ROOT_ACCESS, 1);
        ASSERT_EQ(init_agent("talvik-unit-test"), 0);
    }

    void TearDown() override { shutdown_agent(); }
};

const auto* const kLibrary = testing::AddGlobalTestEnvironment(new AgentLibrary);

/// One request, made by hand, on the registration that serves a table.
class HandMadeRequest {
public:
    /// `first` is the position of the first variable in the whole request.
    explicit HandMadeRequest(const ObjectId& table, int first = 1)
        : registration_(netsnmp_subtree_find(table.data(), table.size(), nullptr, "")->reginfo),
          first_(first)
    {
        session_.pdu = &pdu_;
        session_.session = &wire_;
        info_.asp = &session_;
    }

    ~HandMadeRequest()
    {
        netsnmp_free_all_list_data(info_.agent_data);
        for (auto& request : requests_) {
            netsnmp_free_all_list_data(request.parent_data);
        }
        snmp_free_varbind(variables_);
    }

    HandMadeRequest(const HandMadeRequest&) = delete;
    HandMadeRequest& operator=(const HandMadeRequest&) = delete;

    HandMadeRequest& add(const ObjectId& name, const SnmpValue& value)
    {
        auto* variable =
            snmp_varlist_add_variable(&variables_, name.data(), name.size(), ASN_NULL, nullptr, 0);
        talvik::setValue(*variable, value);
        return *this;
    }

    HandMadeRequest& add(const ObjectId& name)
    {
        snmp_varlist_add_variable(&variables_, name.data(), name.size(), ASN_NULL, nullptr, 0);
        return *this;
    }

    /// One phase or mode. Returns the errors of all variables.
    std::vector<int> run(int mode)
    {
        link();
        info_.mode = mode;
        EXPECT_EQ(netsnmp_call_handlers(registration_, &info_, requests_.data()), SNMP_ERR_NOERROR);
        std::vector<int> errors;
        for (const auto& request : requests_) {
            errors.push_back(request.status);
        }
        return errors;
    }

    const netsnmp_variable_list& variable() const { return *variables_; }

    /// Another table's part of the request has failed.
    void failElsewhere(int error, int position)
    {
        session_.status = error;
        session_.index = position;
    }

    /// The error index that an error of each variable gives the response.
    std::vector<int> errorIndexes() const
    {
        std::vector<int> indexes;
        for (const auto& request : requests_) {
            indexes.push_back(request.index);
        }
        return indexes;
    }

private:
    void link()
    {
        if (!requests_.empty()) {
            return;
        }
        int index = first_;
        for (auto* variable = variables_; variable != nullptr; variable = variable->next_variable) {
            netsnmp_request_info request{};
            request.requestvb = variable;
            request.index = index++;
            request.agent_req_info = &info_;
            requests_.push_back(request);
        }
        for (std::size_t i = 1; i < requests_.size(); ++i) {
            requests_[i - 1].next = &requests_[i];
            requests_[i].prev = &requests_[i - 1];
        }
    }

    netsnmp_handler_registration* registration_;
    int first_;
    netsnmp_pdu pdu_{};
    netsnmp_session wire_{};
    netsnmp_agent_session session_{};
    netsnmp_agent_request_info info_{};
    netsnmp_variable_list* variables_ = nullptr;
    std::vector<netsnmp_request_info> requests_;
};

class RequestBridgeOn : public testing::Test {
protected:
    RequestBridgeOn()
    {
        state.rows[1] = {};
        bridge.serve(std::make_unique<talvik::TableSubtree>(std::make_unique<talvik::TableSource>(
            table, std::make_unique<FakeTrapHandler>(state), [this] { return clock(); })));
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

}  // namespace
