#include "tests/unit/trap/trap_handler_test.h"

namespace {

using talvik::test::kNoRecord;
using talvik::test::kRefused;
using talvik::test::noSuchCell;
using talvik::test::notNumerical;
using talvik::test::notString;
using talvik::test::textOfThrown;
using talvik::test::TrapChange;
using talvik::test::TrapFields;

constexpr const char* kUnknownParameter = "failed to create trap, unknown parameter.";

class TrapCreate : public talvik::test::TrapHandlerTest {
protected:
    void expectRefusal()
    {
        EXPECT_EQ(create(), kRefused);
        expectNoChange();
        expectOnlyLine("OnCreateTable", 0x1002E, kUnknownParameter);
        expectBalancedTraces();
    }
};

TEST_F(TrapCreate, WithAddressAndPortAloneSendsVersionTwoTypeOneAndNoUser)
{
    text(1, "192.0.2.1");
    number(2, 162);

    EXPECT_EQ(create(), 0);

    expectOnlyChange("createTrapAddr", {"", "192.0.2.1", 162, 2, 1, "--"});
    EXPECT_TRUE(response.oRecords.empty());
    expectNoLine();
    expectBalancedTraces();
}

TEST_F(TrapCreate, TakesEveryColumn)
{
    text(1, "192.0.2.1");
    number(2, 4294967295U);
    number(5, 3);
    number(7, 7);
    text(8, "operator");

    EXPECT_EQ(create(), 0);

    expectOnlyChange("createTrapAddr", {"", "192.0.2.1", 4294967295U, 3, 7, "operator"});
}

TEST_F(TrapCreate, SendsTheIndexEmptyWhateverTheRequestNames)
{
    text(1, "192.0.2.1");
    number(2, 162);
    number(3, 4);
    text(4, "17");

    EXPECT_EQ(create(), 0);

    expectOnlyChange("createTrapAddr", {"", "192.0.2.1", 162, 2, 1, "--"});
}

TEST_F(TrapCreate, StoresTheAddressOfTagSixWhenBothAreValid)
{
    text(1, "192.0.2.1");
    number(2, 162);
    text(6, "192.0.2.6");

    EXPECT_EQ(create(), 0);

    expectOnlyChange("createTrapAddr", {"", "192.0.2.6", 162, 2, 1, "--"});
}

TEST_F(TrapCreate, TakesTheAddressOfTagSixAlone)
{
    number(2, 162);
    text(6, "trap.example.net");

    EXPECT_EQ(create(), 0);

    expectOnlyChange("createTrapAddr", {"", "trap.example.net", 162, 2, 1, "--"});
}

TEST_F(TrapCreate, IsRefusedWithAnInvalidTagSixAlone)
{
    number(2, 162);
    text(6, "bad address");
    trapHost.refusedAddresses = {"bad address"};

    expectRefusal();

    EXPECT_EQ(trapCalls(), Calls({"CheckIPAddrOK"}));
}

TEST_F(TrapCreate, DropsAnInvalidTagSixBesideAValidTagOne)
{
    text(1, "192.0.2.1");
    number(2, 162);
    text(6, "bad address");
    trapHost.refusedAddresses = {"bad address"};

    EXPECT_EQ(create(), 0);

    expectOnlyChange("createTrapAddr", {"", "192.0.2.1", 162, 2, 1, "--"});
    expectNoLine();
}

TEST_F(TrapCreate, IsRefusedWithAnInvalidTagOneAlone)
{
    text(1, "bad address");
    number(2, 162);
    trapHost.refusedAddresses = {"bad address"};

    expectRefusal();
}

TEST_F(TrapCreate, TakesAValidTagSixInPlaceOfAnInvalidTagOne)
{
    text(1, "bad address");
    number(2, 162);
    text(6, "192.0.2.6");
    trapHost.refusedAddresses = {"bad address"};

    EXPECT_EQ(create(), 0);

    expectOnlyChange("createTrapAddr", {"", "192.0.2.6", 162, 2, 1, "--"});
}

TEST_F(TrapCreate, IsRefusedWithoutAnAddress)
{
    number(2, 162);

    expectRefusal();

    EXPECT_EQ(trapCalls(), Calls());
}

TEST_F(TrapCreate, IsRefusedForItsVersionAlthoughTheAddressIsValid)
{
    text(1, "192.0.2.1");
    number(2, 162);
    number(5, 9);
    trapHost.refusedVersions = {9};

    expectRefusal();

    EXPECT_EQ(trapCalls(), Calls({"CheckTrapVerOK"}));
}

TEST_F(TrapCreate, IsRefusedForItsTypeAlthoughTheAddressIsValid)
{
    text(1, "192.0.2.1");
    number(2, 162);
    number(7, 9);
    trapHost.refusedTypes = {9};

    expectRefusal();

    EXPECT_EQ(trapCalls(), Calls({"CheckTrapTypeOK"}));
}

TEST_F(TrapCreate, DropsAnInvalidUserInSilence)
{
    text(1, "192.0.2.1");
    number(2, 162);
    text(8, "nobody");
    trapHost.refusedUsers = {"nobody"};

    EXPECT_EQ(create(), 0);

    expectOnlyChange("createTrapAddr", {"", "192.0.2.1", 162, 2, 1, "--"});
    expectNoLine();
}

TEST_F(TrapCreate, ChecksTheWholeRowInOrder)
{
    text(1, "192.0.2.1");
    number(2, 162);

    create();

    EXPECT_EQ(trapCalls(), Calls({"CheckIPAddrOK", "CheckTrapPortOK", "CheckTrapVerOK",
                                  "CheckTrapTypeOK", "createTrapAddr"}));
    const TrapFields row = {"", "192.0.2.1", 162, 2, 1, "--"};
    const std::vector<std::pair<std::string, TrapFields>> seen = {
        {"CheckTrapPortOK", row}, {"CheckTrapVerOK", row}, {"CheckTrapTypeOK", row}};
    EXPECT_EQ(trapHost.checks, seen);
    EXPECT_EQ(trapHost.addressesChecked, Calls({"192.0.2.1"}));
}

TEST_F(TrapCreate, ChecksEveryColumnBeforeTheWholeRow)
{
    text(1, "192.0.2.1");
    number(2, 162);
    number(5, 1);
    text(6, "192.0.2.6");
    number(7, 7);
    text(8, "operator");

    create();

    EXPECT_EQ(trapCalls(), Calls({"CheckTrapVerOK", "CheckTrapTypeOK",  // the request as a whole
                                  "CheckTrapVerOK", "CheckIPAddrOK", "CheckTrapTypeOK",
                                  "CheckTrapUserOK", "CheckIPAddrOK", "CheckTrapPortOK",
                                  "CheckTrapVerOK", "CheckTrapTypeOK", "createTrapAddr"}));
    EXPECT_EQ(trapHost.addressesChecked, Calls({"192.0.2.6", "192.0.2.6"}));
}

TEST_F(TrapCreate, StopsAtThePort)
{
    text(1, "192.0.2.1");
    number(2, 0);
    trapHost.refusedPorts = {0};

    expectRefusal();

    EXPECT_EQ(trapCalls(), Calls({"CheckIPAddrOK", "CheckTrapPortOK"}));
}

TEST_F(TrapCreate, StopsAtTheDefaultVersion)
{
    text(1, "192.0.2.1");
    number(2, 162);
    trapHost.refusedVersions = {2};

    expectRefusal();

    EXPECT_EQ(trapCalls(), Calls({"CheckIPAddrOK", "CheckTrapPortOK", "CheckTrapVerOK"}));
}

TEST_F(TrapCreate, StopsAtTheDefaultType)
{
    text(1, "192.0.2.1");
    number(2, 162);
    trapHost.refusedTypes = {1};

    expectRefusal();

    EXPECT_EQ(trapCalls(),
              Calls({"CheckIPAddrOK", "CheckTrapPortOK", "CheckTrapVerOK", "CheckTrapTypeOK"}));
}

TEST_F(TrapCreate, StopsAtTheAddress)
{
    text(1, "192.0.2.1");
    number(2, 162);
    trapHost.refusedAddresses = {"192.0.2.1"};

    expectRefusal();

    EXPECT_EQ(trapCalls(), Calls({"CheckIPAddrOK"}));
}

TEST_F(TrapCreate, NeverChecksTheDefaultUser)
{
    text(1, "192.0.2.1");
    number(2, 162);
    trapHost.refusedUsers = {"--"};

    EXPECT_EQ(create(), 0);
}

TEST_F(TrapCreate, PassesTheHostsResultOn)
{
    text(1, "192.0.2.1");
    number(2, 162);
    for (const int result : {0x1000022, -1, 1}) {
        trapHost.changeResult = result;
        EXPECT_EQ(create(), result);
    }
    expectNoLine();
}

TEST_F(TrapCreate, PassesTheHeadersWordOn)
{
    text(1, "192.0.2.1");
    number(2, 162);
    const TrapFields row = {"", "192.0.2.1", 162, 2, 1, "--"};
    std::vector<TrapChange> expected;
    for (const unsigned word : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        request.oHead.uiWord3 = word;
        create();
        expected.push_back({"createTrapAddr", row, word});
    }
    EXPECT_EQ(trapHost.changes, expected);
}

TEST_F(TrapCreate, LeavesTheRecordsOfTheResponse)
{
    text(1, "192.0.2.1");
    number(2, 162);
    response.oRecords.push_back(new CTLVRecordV3(5));

    create();

    ASSERT_EQ(response.oRecords.size(), 1U);
    EXPECT_EQ(response[0]->ullRecordId, 5U);
    EXPECT_TRUE(response[0]->pCells->empty());
}

TEST_F(TrapCreate, FailsWithTheLookUpWithoutAPort)
{
    text(1, "192.0.2.1");

    EXPECT_EQ(textOfThrown([this] { create(); }), noSuchCell(2));
    EXPECT_EQ(trapCalls(), Calls());
    expectNoChange();
    expectNoLine();
    expectBalancedTraces();
}

TEST_F(TrapCreate, ReadsThePortBeforeItRefusesAnything)
{
    number(5, 9);
    trapHost.refusedVersions = {9};

    EXPECT_EQ(textOfThrown([this] { create(); }), noSuchCell(2));
    EXPECT_EQ(trapCalls(), Calls());
}

TEST_F(TrapCreate, FailsWithoutARecord)
{
    request.clear();

    EXPECT_EQ(textOfThrown([this] { create(); }), kNoRecord);
    expectNoChange();
    expectBalancedTraces();
}

TEST_F(TrapCreate, FailsOnAPortThatIsText)
{
    text(1, "192.0.2.1");
    text(2, "162");

    EXPECT_EQ(textOfThrown([this] { create(); }), notNumerical(2));
    expectNoChange();
    expectBalancedTraces();
}

TEST_F(TrapCreate, FailsOnAnAddressThatIsANumberAfterThePreCheck)
{
    number(1, 1);
    number(2, 162);
    number(5, 2);

    EXPECT_EQ(textOfThrown([this] { create(); }), notString(1));
    EXPECT_EQ(trapCalls(), Calls({"CheckTrapVerOK"}));
    expectNoChange();
    expectBalancedTraces();
}

TEST_F(TrapCreate, FailsOnATagSixOfTheWrongKindBesideAValidTagOne)
{
    text(1, "192.0.2.1");
    number(2, 162);
    number(6, 1);

    EXPECT_EQ(textOfThrown([this] { create(); }), notString(6));
    expectNoChange();
    expectNoLine();
    expectBalancedTraces();
}

TEST_F(TrapCreate, TakesTheFirstOfTwoCellsWithOneTag)
{
    text(1, "192.0.2.1");
    text(1, "192.0.2.9");
    number(2, 162);
    number(2, 163);

    create();

    expectOnlyChange("createTrapAddr", {"", "192.0.2.1", 162, 2, 1, "--"});
}

}  // namespace
