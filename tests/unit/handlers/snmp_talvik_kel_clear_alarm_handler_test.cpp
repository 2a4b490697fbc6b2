#include "handlers/snmp_talvik_kel_clear_alarm_handler.h"

#include "tests/support/allocation_probe.h"
#include "tests/support/cell_bytes.h"
#include "tests/support/fake_host_test.h"
#include "tests/support/throw_text.h"

#include <gmock/gmock.h>

#include <memory>
#include <new>

namespace {

using namespace talvik::test;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Package = CTLVPackageV3<TLVMsgHeadV3>;

class ClearAlarmLeaf : public FakeHostTest {
protected:
    ClearAlarmLeaf()
    {
        host.deviceItems[{"COMMAND", "CLEAR_ALARM"}] = "4003";
        request.oRecords.push_back(new CTLVRecordV3);
        name("\x2A\0\0\0"s);
    }

    /// Has the request name an alarm by a cell of tag 0 alone.
    void name(const std::string& bytes, CTLVCell::ETLVType type = CTLVCell::TLV_UINT)
    {
        request[0]->clear();
        auto cell = std::make_unique<CTLVCell>();
        cell->set_i(type, 0, bytes.data(), bytes.size());
        request[0]->append(cell.get());
        cell.release();
    }

    int set() { return handler.OnSetLeaf(context, request, response); }

    std::string refusal()
    {
        return textOfThrown([this] { set(); });
    }

    /// The command that went out, decoded.
    void decodeCommand(Package& command, std::size_t index = 0)
    {
        auto& bytes = host.commands.at(index).bytes;
        ASSERT_NE(command.decode(bytes.data(), static_cast<unsigned>(bytes.size())),
                  Package::FAILED);
    }

    /// The serial number that the last command carries, as its bytes.
    std::string serialSent()
    {
        Package command;
        decodeCommand(command, host.commands.size() - 1);
        return bytesOf(*(*command[0])[3]).bytes;
    }

    /// From here on nothing is recorded, and what the host makes on its first use is there.
    void prepareForCounting()
    {
        set();
        host.recording = false;
    }

    CSnmpTalvikKelClearAlarmHandler handler;
    Package request;
    Package response;
};

TEST_F(ClearAlarmLeaf, SendsTheSerialNumberAndWhoAsks)
{
    ASSERT_EQ(set(), 0);

    ASSERT_THAT(host.commands, SizeIs(1));
    Package command;
    decodeCommand(command);
    ASSERT_THAT(command.oRecords, SizeIs(1));
    EXPECT_EQ(command[0]->ullRecordId, 4003U);
    EXPECT_THAT(cellsOf(*command[0]),
                ElementsAre(CellBytes{3, 3, "\x2A\0\0\0"s}, CellBytes{7, 2, "SNMP_AGENT\0"s}));
}

TEST_F(ClearAlarmLeaf, CarriesWordThreeOfTheRequestAndNoOtherOfItsHeader)
{
    request.oHead.uiWord2 = 2;
    request.oHead.uiWord3 = 0xC0A80101;
    request.oHead.usShort0 = 5;
    request.oHead.usShort1 = 6;
    request.oHead.usShort2 = 7;
    request.oHead.usShort3 = 8;

    ASSERT_EQ(set(), 0);

    const std::string head(host.commands.at(0).bytes.begin(),
                           host.commands.at(0).bytes.begin() + 28);
    EXPECT_EQ(head, "UUUU\x03\0\0\0\0\0\0\0\x01\x01\xA8\xC0"
                    "\xFD\xFF\x01\0\xFF\xFF\xFF\xFF\x21\0\0\0"s);
    EXPECT_EQ(request.oHead.uiWord3, 0xC0A80101);
}

TEST_F(ClearAlarmLeaf, SetsNeitherFlagOfTheChannel)
{
    set();

    EXPECT_FALSE(host.commands.at(0).first);
    EXPECT_FALSE(host.commands.at(0).second);
}

TEST_F(ClearAlarmLeaf, ReturnsTheBackEndsResultAfterAWarningThatSaysIt)
{
    const std::pair<int, const char*> results[] = {
        {0, "clear alarm of serial number:42, ret:0."},
        {-1, "clear alarm of serial number:42, ret:-1."},
        {0x1000012, "clear alarm of serial number:42, ret:16777234."},
    };
    for (const auto& [result, text] : results) {
        host.log.clear();
        host.configureResult = result;

        EXPECT_EQ(set(), result);

        EXPECT_THAT(host.texts("warn"), ElementsAre(text));
        EXPECT_THAT(host.log, SizeIs(3));  // and the two trace lines
        EXPECT_EQ(host.log[1].messageId, 0x1002EU);
        EXPECT_EQ(host.log[1].label, "OnSetLeaf");
        EXPECT_EQ(host.log[1].moduleId, 4U);
    }
}

TEST_F(ClearAlarmLeaf, TracesItsSignature)
{
    set();

    const auto traces = host.texts("trace");
    ASSERT_THAT(traces, SizeIs(2));
    EXPECT_EQ(traces[0].rfind("enter virtual int CSnmpTalvikKelClearAlarmHandler::OnSetLeaf(", 0),
              0U)
        << traces[0];
}

TEST_F(ClearAlarmLeaf, PutsTheBackEndsAnswerIntoTheResponse)
{
    host.fillAnswer = [](Package& answer) { answer.oRecords.push_back(new CTLVRecordV3(4003)); };

    ASSERT_EQ(set(), 0);

    ASSERT_THAT(response.oRecords, SizeIs(1));
    EXPECT_EQ(response[0]->ullRecordId, 4003U);
}

TEST_F(ClearAlarmLeaf, SerialNumbersAreNotValidated)
{
    for (const auto& serial : {"\0\0\0\0"s, "\xFF\xFF\xFF\xFF"s}) {
        name(serial);
        EXPECT_EQ(set(), 0);
        EXPECT_EQ(serialSent(), serial);
    }
    EXPECT_THAT(host.texts("warn"), ElementsAre("clear alarm of serial number:0, ret:0.",
                                                "clear alarm of serial number:4294967295, ret:0."));
}

TEST_F(ClearAlarmLeaf, SerialNumbersOfOtherWidthsAreReadAs32Bits)
{
    name("\x07");
    set();
    EXPECT_EQ(serialSent(), "\x07\0\0\0"s);

    name("\x07\0\0\0\x05\0\0\0"s);
    set();
    EXPECT_EQ(serialSent(), "\x07\0\0\0"s);

    name("\xFE\xFF", CTLVCell::TLV_INT);
    set();
    EXPECT_EQ(serialSent(), "\xFE\xFF\xFF\xFF");
}

TEST_F(ClearAlarmLeaf, LooksAtTheFirstRecordAlone)
{
    request.oRecords.push_back(new CTLVRecordV3(9));

    ASSERT_EQ(set(), 0);

    Package command;
    decodeCommand(command);
    EXPECT_THAT(command.oRecords, SizeIs(1));
    EXPECT_EQ(serialSent(), "\x2A\0\0\0"s);
}

TEST_F(ClearAlarmLeaf, ReadsTheCommandNumberAtEverySet)
{
    set();
    host.deviceItems[{"COMMAND", "CLEAR_ALARM"}] = "-1";
    set();
    host.deviceItems.clear();
    set();

    const std::uint64_t numbers[] = {4003, 0xFFFFFFFFFFFFFFFF, 0};
    for (std::size_t i = 0; i < 3; ++i) {
        Package command;
        decodeCommand(command, i);
        EXPECT_EQ(command[0]->ullRecordId, numbers[i]);
    }
    EXPECT_THAT(host.itemsRead, SizeIs(3));
    EXPECT_EQ(host.itemsRead[2], std::pair("COMMAND"s, "CLEAR_ALARM"s));
}

TEST_F(ClearAlarmLeaf, ARequestWithoutARecordIsAnExceptionAndSendsNothing)
{
    request.clear();

    EXPECT_EQ(refusal(), "CKEL_Exception: record don't exist, index is 0");

    EXPECT_THAT(host.commands, IsEmpty());
    EXPECT_THAT(host.texts("warn"), IsEmpty());
    EXPECT_THAT(host.itemsRead, SizeIs(1));  // the command number is read before
    EXPECT_EQ(host.texts("trace").back().rfind("leave ", 0), 0U);
}

TEST_F(ClearAlarmLeaf, ACellThatIsNoNumberIsAnExceptionAndSendsNothing)
{
    for (const auto type : {CTLVCell::TLV_NONE, CTLVCell::TLV_OCTETS, CTLVCell::TLV_STRING}) {
        name("42\0"s, type);

        EXPECT_EQ(refusal(), "CKEL_Exception: CTLVCell isn't numerical type! tag equal to 0");
    }
    request[0]->clear();
    EXPECT_EQ(refusal(), "CKEL_Exception: CTLVRecordV3 has no such cell! tag equal to 0");
    EXPECT_THAT(host.commands, IsEmpty());
    EXPECT_THAT(host.texts("warn"), IsEmpty());
}

TEST_F(ClearAlarmLeaf, ReadsAsZeroWhateverWasSet)
{
    set();
    response.clear();

    ASSERT_EQ(handler.OnQueryLeaf(context, request, response), 0);

    ASSERT_THAT(response.oRecords, SizeIs(1));
    EXPECT_EQ(response[0]->ullRecordId, CTLVRecordV3::NO_RECORD_ID);
    EXPECT_THAT(cellsOf(*response[0]), ElementsAre(CellBytes{0, 3, "\0\0\0\0"s}));
    EXPECT_THAT(host.commands, SizeIs(1));  // the set's
}

TEST_F(ClearAlarmLeaf, HandsANewCellToTheCallerOfAQuery)
{
    CTLVCell* made = nullptr;

    ASSERT_EQ(handler.queryLeaf(context, made), 0);

    const std::unique_ptr<CTLVCell> cell(made);
    EXPECT_EQ(bytesOf(*cell), (CellBytes{0, 3, "\0\0\0\0"s}));
    EXPECT_THAT(host.log, IsEmpty());
}

TEST_F(ClearAlarmLeaf, AQueryThatFailsHandsOutNothing)
{
    host.onCall("set_i", [] { throw std::bad_alloc(); });
    CTLVCell* made = nullptr;
    host.recording = false;
    const AllocationProbe probe;

    EXPECT_THROW(handler.queryLeaf(context, made), std::bad_alloc);

    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(probe.live(), 0);
}

TEST_F(ClearAlarmLeaf, RefusesTableOperations)
{
    EXPECT_EQ(textOfThrown([this] { handler.OnQueryTable(context, request, response); }),
              "CKEL_Exception: CSnmpLeafHandler can't support leaf OnQueryTable!");
}

TEST_F(ClearAlarmLeaf, ReleasesTheCommand)
{
    prepareForCounting();
    const AllocationProbe probe;

    ASSERT_EQ(set(), 0);

    EXPECT_GT(probe.allocations(), 0U);
    EXPECT_EQ(probe.live(), 0);
}

/// Every host call of a set, each made to fail in turn.
class ClearAlarmFailure : public ClearAlarmLeaf, public testing::WithParamInterface<const char*> {};

TEST_P(ClearAlarmFailure, PassesOnAndLeavesNothingAllocated)
{
    prepareForCounting();
    host.onCall(GetParam(), [] { throw std::bad_alloc(); });
    const AllocationProbe probe;

    EXPECT_THROW(set(), std::bad_alloc);

    EXPECT_GT(probe.allocations(), 0U);
    EXPECT_EQ(probe.live(), 0);
}

INSTANTIATE_TEST_SUITE_P(Calls, ClearAlarmFailure,
                         testing::Values("getDeviceItem", "configure", "set_i", "append"));

TEST_F(ClearAlarmLeaf, IsBalancedWhicheverAllocationFails)
{
    prepareForCounting();
    bool failed = true;
    for (std::size_t count = 0; failed; ++count) {
        AllocationProbe probe;
        probe.failAfter(count);
        bool complete = false;
        try {
            complete = set() == 0;
        } catch (const std::bad_alloc&) {
        }
        failed = probe.failed();

        EXPECT_TRUE(complete || failed) << "allocation " << count;
        EXPECT_EQ(probe.live(), 0) << "allocation " << count;
    }
}

}  // namespace
