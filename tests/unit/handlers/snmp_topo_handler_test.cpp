#include "handlers/snmp_topo_handler.h"

#include "tests/support/allocation_probe.h"
#include "tests/support/fake_host_test.h"

#include <iterator>
#include <new>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;
using talvik::test::AllocationProbe;

/// Tag, type code, length and text form of one cell.
using CellFacts = std::tuple<int, int, int, std::string>;

std::vector<CellFacts> factsOf(const CTLVRecordV3& record)
{
    std::vector<CellFacts> facts;
    for (const CTLVCell* cell : *record.pCells) {
        facts.emplace_back(cell->usTagWord >> 4, cell->usTagWord & 0xF, cell->sDataLen,
                           cell->toString());
    }
    return facts;
}

class SnmpTopoHandler : public talvik::test::FakeHostTest {
protected:
    SnmpTopoHandler() { host.deviceItems[{"COMMAND", "GET_SYSTEM_WWN"}] = "4001"; }

    int ask() { return handler.OnQueryTable(context, request, response); }

    /// From here on nothing is recorded, and what the host makes on its first use is there.
    void prepareForCounting()
    {
        host.recording = false;
        ask();
        response.clear();
        response.oRecords.shrink_to_fit();
    }

    std::string status() { return (*response[0])[8]->toString(); }

    /// The command that went out, decoded.
    void decodeCommand(Package& command, std::size_t index = 0)
    {
        auto& bytes = host.commands.at(index).bytes;
        ASSERT_NE(command.decode(bytes.data(), static_cast<unsigned>(bytes.size())),
                  Package::FAILED);
    }

    CSnmpTopoHandler handler;
    Package request;
    Package response;
};

TEST_F(SnmpTopoHandler, AnswersTheOneRowCellByCell)
{
    ASSERT_EQ(ask(), 0);

    ASSERT_EQ(response.oRecords.size(), 1U);
    EXPECT_EQ(response[0]->ullRecordId, 0xFFFFFFFFFFFFFFFFULL);
    const std::vector<CellFacts> expected = {
        {1, 2, 7, "NODE-1"}, {2, 3, 4, "7"}, {3, 4, 4, "1"}, {4, 2, 13, "192.168.2.10"},
        {5, 2, 6, "Array"},  {6, 2, 2, " "}, {7, 2, 2, " "}, {8, 4, 4, "1"},
    };
    EXPECT_EQ(factsOf(*response[0]), expected);
}

TEST_F(SnmpTopoHandler, WithTheBackEndDownStillAnswersTheRowWithStatusTwo)
{
    for (const int failure : {-1, 1, 0x1000001}) {
        response.clear();
        host.configureResult = failure;

        EXPECT_EQ(ask(), 0);
        ASSERT_EQ(response.oRecords.size(), 1U);
        EXPECT_EQ(response[0]->pCells->size(), 8U);
        EXPECT_EQ(status(), "2");
    }
}

TEST_F(SnmpTopoHandler, WithoutANodeCodeTheCellHasNoData)
{
    host.nodeCode.reset();

    ASSERT_EQ(ask(), 0);

    EXPECT_EQ(factsOf(*response[0])[0], CellFacts(1, 2, 0, ""));
}

TEST_F(SnmpTopoHandler, TheAddressIsTheLiteralWhateverTheDeviceSays)
{
    host.deviceItems[{"NETWORK", "ADDRESS"}] = "10.1.2.3";

    ASSERT_EQ(ask(), 0);

    EXPECT_EQ((*response[0])[4]->toString(), "192.168.2.10");
    const std::vector<std::pair<std::string, std::string>> read = {{"COMMAND", "GET_SYSTEM_WWN"}};
    EXPECT_EQ(host.itemsRead, read);
}

TEST_F(SnmpTopoHandler, AQueryThatNamesAnotherRowGetsTheSameRow)
{
    auto cell = std::make_unique<CTLVCell>();
    const int otherNode = 99;
    cell->set_i(CTLVCell::TLV_INT, 3, &otherNode, sizeof otherNode);
    request.oRecords.push_back(new CTLVRecordV3);
    request[0]->append(cell.release());

    ASSERT_EQ(ask(), 0);

    ASSERT_EQ(response.oRecords.size(), 1U);
    EXPECT_EQ((*response[0])[3]->toString(), "1");
}

TEST_F(SnmpTopoHandler, SendsTheCommandAsOneRecordWithoutCells)
{
    ASSERT_EQ(ask(), 0);

    ASSERT_EQ(host.commands.size(), 1U);
    EXPECT_FALSE(host.commands[0].first);
    EXPECT_FALSE(host.commands[0].second);
    Package command;
    decodeCommand(command);
    ASSERT_EQ(command.oRecords.size(), 1U);
    EXPECT_EQ(command[0]->ullRecordId, 4001U);
    EXPECT_TRUE(command[0]->pCells->empty());
    EXPECT_EQ(command.oHead.uiWord3, 0xFFFFFFFFU);
    EXPECT_EQ(command.oHead.usShort1, 1U);
}

TEST_F(SnmpTopoHandler, ReadsTheCommandNumberOnEveryQuery)
{
    ask();
    host.deviceItems[{"COMMAND", "GET_SYSTEM_WWN"}] = "5002";
    ask();

    Package command;
    decodeCommand(command, 1);
    EXPECT_EQ(command[0]->ullRecordId, 5002U);
    EXPECT_EQ(host.count("getDeviceItem"), 2U);
}

struct CommandNumber {
    const char* name;
    const char* text;
    std::uint64_t number;

    friend std::ostream& operator<<(std::ostream& os, const CommandNumber& row)
    {
        return os << row.name;
    }
};

class SnmpTopoCommandNumber : public SnmpTopoHandler,
                              public testing::WithParamInterface<CommandNumber> {};

TEST_P(SnmpTopoCommandNumber, IsSignedDecimalText)
{
    host.deviceItems[{"COMMAND", "GET_SYSTEM_WWN"}] = GetParam().text;

    ASSERT_EQ(ask(), 0);

    Package command;
    decodeCommand(command);
    EXPECT_EQ(command[0]->ullRecordId, GetParam().number);
}

const CommandNumber kCommandNumbers[] = {
    {"NoNumber", "wwn", 0},
    {"Empty", "", 0},
    {"TrailingText", "12x", 12},
    {"Hexadecimal", "0x10", 0},
    {"Octal", "010", 10},
    {"Negative", "-1", 0xFFFFFFFFFFFFFFFFULL},
    {"SixtyThreeBits", "9223372036854775807", 0x7FFFFFFFFFFFFFFFULL},
};

INSTANTIATE_TEST_SUITE_P(Texts, SnmpTopoCommandNumber, testing::ValuesIn(kCommandNumbers),
                         [](const auto& row) { return row.param.name; });

TEST_F(SnmpTopoHandler, DiscardsWhatTheBackEndAnswers)
{
    host.fillAnswer = [](Package& answer) { answer.oRecords.push_back(new CTLVRecordV3(4001)); };

    ASSERT_EQ(ask(), 0);

    EXPECT_EQ(response.oRecords.size(), 1U);
}

TEST_F(SnmpTopoHandler, AppendsAfterTheRecordsThatTheResponseHolds)
{
    response.oRecords.push_back(new CTLVRecordV3(5));

    ASSERT_EQ(ask(), 0);

    ASSERT_EQ(response.oRecords.size(), 2U);
    EXPECT_EQ(response[0]->ullRecordId, 5U);
}

TEST_F(SnmpTopoHandler, TracesItsSignatureWithModuleFour)
{
    ask();

    const auto traces = host.texts("trace");
    ASSERT_EQ(traces.size(), 2U);
    EXPECT_EQ(traces[0].find("enter virtual int CSnmpTopoHandler::OnQueryTable("), 0U) << traces[0];
    EXPECT_EQ(host.log[0].moduleId, 4U);
}

/// Every host call of the query, each made to fail in turn.
class SnmpTopoFailure : public SnmpTopoHandler, public testing::WithParamInterface<const char*> {};

TEST_P(SnmpTopoFailure, PassesOnAndLeavesTheResponseUntouched)
{
    host.onCall(GetParam(), [] { throw std::bad_alloc(); });

    EXPECT_THROW(ask(), std::bad_alloc);
    EXPECT_TRUE(response.oRecords.empty());
    EXPECT_EQ(host.texts("trace").back().substr(0, 5), "leave");
}

TEST_P(SnmpTopoFailure, LeavesNothingAllocated)
{
    prepareForCounting();
    host.onCall(GetParam(), [] { throw std::bad_alloc(); });
    const AllocationProbe probe;

    EXPECT_THROW(ask(), std::bad_alloc);

    EXPECT_GT(probe.allocations(), 0U);
    EXPECT_EQ(probe.live(), 0);
}

INSTANTIATE_TEST_SUITE_P(Calls, SnmpTopoFailure,
                         testing::Values("getDeviceItem", "configure", "getNodeCode", "getNodeType",
                                         "set_i", "append"));

TEST_F(SnmpTopoHandler, ACellThatFailsHalfWayLeavesTheResponseUntouchedAndNothingAllocated)
{
    prepareForCounting();
    int left = 5;
    host.onCall("append", [&left] {
        if (left-- == 0) {
            throw std::bad_alloc();
        }
    });
    const AllocationProbe probe;

    EXPECT_THROW(ask(), std::bad_alloc);

    EXPECT_TRUE(response.oRecords.empty());
    EXPECT_GT(probe.allocations(), 0U);
    EXPECT_EQ(probe.live(), 0);
}

TEST_F(SnmpTopoHandler, IsBalancedWhicheverAllocationFails)
{
    prepareForCounting();
    bool failed = true;
    for (std::size_t count = 0; failed; ++count) {
        Package answer;
        answer.oRecords.reserve(1);
        answer.oRecords.push_back(new CTLVRecordV3(5));
        CTLVRecordV3* const held = answer[0];
        AllocationProbe probe;
        probe.failAfter(count);
        bool answered = false;
        try {
            handler.OnQueryTable(context, request, answer);
            answered = true;
        } catch (const std::bad_alloc&) {
        }
        failed = probe.failed();

        EXPECT_TRUE(answered || failed) << "allocation " << count;
        ASSERT_EQ(answer.oRecords.size(), answered ? 2U : 1U) << "allocation " << count;
        EXPECT_EQ(answer[0], held) << "allocation " << count;
        if (answered) {  // what the answer holds goes, the record that was there before stays
            EXPECT_EQ(answer[1]->pCells->size(), 8U) << "allocation " << count;
            delete answer.oRecords.back();
            answer.oRecords.pop_back();
            answer.oRecords.shrink_to_fit();
        }
        EXPECT_EQ(probe.live(), 0) << "allocation " << count;
    }
}

}  // namespace
