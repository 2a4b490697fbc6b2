#include "tests/unit/trap/trap_handler_test.h"

namespace {

using talvik::test::kNoRecord;
using talvik::test::kRefused;
using talvik::test::notNumerical;
using talvik::test::notString;
using talvik::test::textOfThrown;
using talvik::test::TrapChange;
using talvik::test::TrapFields;

constexpr const char* kUnresolvable = "failed to delete trap, unresolvable argument.";

class TrapDelete : public talvik::test::TrapHandlerTest {
protected:
    TrapDelete()
    {
        listed({"17", "192.0.2.1", 162, 1, 7, "operator"});
        listed({"18", "192.0.2.2", 162, 3, 1, "--"});
        listed({"19", "192.0.2.1", 163, 2, 1, "--"});
    }

    void expectRefusal(unsigned long long code, const std::string& line)
    {
        EXPECT_EQ(remove(), kRefused);
        expectNoChange();
        expectOnlyLine("OnDeleteTable", code, line);
        expectBalancedTraces();
    }
};

TEST_F(TrapDelete, ByAddressAndPortSendsTheIndexFoundInADefaultRow)
{
    text(1, "192.0.2.2");
    number(2, 162);

    EXPECT_EQ(remove(), 0);

    expectOnlyChange("deleteTrapAddr", {"18", "192.0.2.2", 162, 2, 3, "--"});
    EXPECT_TRUE(response.oRecords.empty());
    expectNoLine();
    expectBalancedTraces();
}

TEST_F(TrapDelete, ByAddressAndPortWinsOverTheIndexAndChecksNothing)
{
    text(1, "192.0.2.1");
    number(2, 163);
    text(4, "17");
    trapHost.refusedIndexes = {"17", "19"};

    EXPECT_EQ(remove(), 0);

    expectOnlyChange("deleteTrapAddr", {"19", "192.0.2.1", 163, 2, 3, "--"});
    EXPECT_EQ(trapCalls(), Calls({"getAllTrapAddr", "deleteTrapAddr"}));
}

TEST_F(TrapDelete, ByAddressAndPortDoesNotLookAtTheIndexCell)
{
    text(1, "192.0.2.1");
    number(2, 162);
    number(4, 18);

    EXPECT_EQ(remove(), 0);

    expectOnlyChange("deleteTrapAddr", {"17", "192.0.2.1", 162, 2, 3, "--"});
}

TEST_F(TrapDelete, OfTwoRowsWithOneAddressAndPortTakesTheFirstInTheListsOrder)
{
    trapHost.destinations.clear();
    listed({"9", "192.0.2.7", 162, 1, 1, "last"});
    listed({"1", "192.0.2.7", 162, 1, 1, "first"});
    text(1, "192.0.2.7");
    number(2, 162);

    EXPECT_EQ(remove(), 0);

    expectOnlyChange("deleteTrapAddr", {"9", "192.0.2.7", 162, 2, 3, "--"});
}

TEST_F(TrapDelete, ByIndexAloneSendsADefaultRowWithIt)
{
    text(4, "18");

    EXPECT_EQ(remove(), 0);

    expectOnlyChange("deleteTrapAddr", {"18", "", 0, 2, 3, "--"});
    EXPECT_EQ(trapCalls(), Calls({"getAllTrapAddr", "CheckTrapIndOK", "deleteTrapAddr"}));
    expectNoLine();
    expectBalancedTraces();
}

TEST_F(TrapDelete, ByIndexDoesNotAskWhetherTheListHasIt)
{
    text(4, "99");

    EXPECT_EQ(remove(), 0);

    expectOnlyChange("deleteTrapAddr", {"99", "", 0, 2, 3, "--"});
}

TEST_F(TrapDelete, GoesByIndexWhenAddressAndPortMatchNothingAndSendsThemAlong)
{
    text(1, "192.0.2.2");
    number(2, 163);
    text(4, "18");

    EXPECT_EQ(remove(), 0);

    const TrapFields row = {"18", "192.0.2.2", 163, 2, 3, "--"};
    expectOnlyChange("deleteTrapAddr", row);
    const std::vector<std::pair<std::string, TrapFields>> seen = {{"CheckTrapIndOK", row}};
    EXPECT_EQ(trapHost.checks, seen);
}

TEST_F(TrapDelete, WithAnAddressButNoPortGoesByIndexWithoutReadingTheAddress)
{
    number(1, 1);
    text(4, "18");

    EXPECT_EQ(remove(), 0);

    expectOnlyChange("deleteTrapAddr", {"18", "", 0, 2, 3, "--"});
}

TEST_F(TrapDelete, WithAPortButNoAddressGoesByIndexWithoutReadingThePort)
{
    text(2, "162");
    text(4, "18");

    EXPECT_EQ(remove(), 0);

    expectOnlyChange("deleteTrapAddr", {"18", "", 0, 2, 3, "--"});
}

TEST_F(TrapDelete, IsRefusedWithoutAMatchAndWithoutAnIndex)
{
    text(1, "192.0.2.2");
    number(2, 163);

    expectRefusal(0x10014, kUnresolvable);

    EXPECT_EQ(trapCalls(), Calls({"getAllTrapAddr"}));
}

TEST_F(TrapDelete, IsRefusedWithAnAddressAlone)
{
    text(1, "192.0.2.1");

    expectRefusal(0x10014, kUnresolvable);
}

TEST_F(TrapDelete, IsRefusedWithAPortAlone)
{
    number(2, 162);

    expectRefusal(0x10014, kUnresolvable);
}

TEST_F(TrapDelete, IsRefusedWithoutAnyCell)
{
    expectRefusal(0x10014, kUnresolvable);
}

TEST_F(TrapDelete, IsRefusedForAnIndexThatTheHostDoesNotAccept)
{
    text(4, "seven%s");
    trapHost.refusedIndexes = {"seven%s"};

    expectRefusal(0x1002E, "unknown trap index:seven%s.");

    EXPECT_EQ(trapCalls(), Calls({"getAllTrapAddr", "CheckTrapIndOK"}));
}

TEST_F(TrapDelete, ReadsTheAddressOfTagOneOnly)
{
    text(6, "192.0.2.1");
    number(2, 162);

    expectRefusal(0x10014, kUnresolvable);
}

/// An address that is none of the list's, byte for byte.
class TrapDeleteOther : public TrapDelete, public testing::WithParamInterface<const char*> {};

TEST_P(TrapDeleteOther, IsNoMatch)
{
    trapHost.destinations.clear();
    listed({"17", "Trap.example.net", 162, 1, 7, "operator"});
    text(1, GetParam());
    number(2, 162);

    expectRefusal(0x10014, kUnresolvable);
}

INSTANTIATE_TEST_SUITE_P(Addresses, TrapDeleteOther,
                         testing::Values("Trap.example.ne", "Trap.example.net.", "trap.example.net",
                                         "Trap.exomple.net", " Trap.example.net", "",
                                         "Urap.example.net", "Trap.example.neu"));

TEST_F(TrapDelete, AnAddressWithAByteBehindANulIsNoMatch)
{
    using namespace std::string_literals;
    trapHost.destinations.clear();
    listed({"17", "192.0.2.1\0x"s, 162, 1, 7, "operator"});
    text(1, "192.0.2.1");
    number(2, 162);

    expectRefusal(0x10014, kUnresolvable);
}

TEST_F(TrapDelete, AnEmptyAddressMatchesARowWithNone)
{
    listed({"20", "", 162, 2, 1, "--"});
    text(1, "");
    number(2, 162);

    EXPECT_EQ(remove(), 0);

    expectOnlyChange("deleteTrapAddr", {"20", "", 162, 2, 3, "--"});
}

TEST_F(TrapDelete, APortIsComparedInAllItsBits)
{
    text(1, "192.0.2.1");
    number(2, 162 + 65536);

    expectRefusal(0x10014, kUnresolvable);
}

TEST_F(TrapDelete, FailsWhenTheListCannotBeRead)
{
    text(1, "192.0.2.1");
    number(2, 162);
    text(4, "17");
    for (const int result : {-1, 1, 0x1000023}) {
        host.reset();
        trapHost.listResult = result;

        EXPECT_EQ(remove(), -1);

        EXPECT_EQ(trapCalls(), Calls({"getAllTrapAddr"}));
        expectNoChange();
        expectOnlyLine("OnDeleteTable", 0x1002E, "failed to get all trap.");
        expectBalancedTraces();
    }
}

TEST_F(TrapDelete, ReadsTheListBeforeItLooksAtTheRequest)
{
    request.clear();
    trapHost.listResult = -1;

    EXPECT_EQ(remove(), -1);
}

TEST_F(TrapDelete, FailsWithoutARecord)
{
    request.clear();

    EXPECT_EQ(textOfThrown([this] { remove(); }), kNoRecord);
    expectNoChange();
    expectBalancedTraces();
}

TEST_F(TrapDelete, FailsOnAnAddressThatIsANumber)
{
    number(1, 1);
    text(2, "162");

    EXPECT_EQ(textOfThrown([this] { remove(); }), notString(1));
    expectNoChange();
    expectBalancedTraces();
}

TEST_F(TrapDelete, FailsOnAPortThatIsTextAlthoughAnIndexIsThere)
{
    text(1, "192.0.2.1");
    text(2, "162");
    text(4, "17");

    EXPECT_EQ(textOfThrown([this] { remove(); }), notNumerical(2));
    expectNoChange();
    expectBalancedTraces();
}

TEST_F(TrapDelete, FailsOnAnIndexThatIsANumber)
{
    number(4, 17);

    EXPECT_EQ(textOfThrown([this] { remove(); }), notString(4));
    expectNoChange();
    expectNoLine();
    expectBalancedTraces();
}

TEST_F(TrapDelete, ReadsAPortOfAnyWidth)
{
    text(1, "192.0.2.1");
    cell(2, CTLVCell::TLV_INT, {"\xA2", 1});

    EXPECT_EQ(remove(), 0);

    expectOnlyChange("deleteTrapAddr", {"17", "192.0.2.1", 162, 2, 3, "--"});
}

TEST_F(TrapDelete, PassesTheHostsResultAndTheHeadersWordOn)
{
    text(4, "17");
    const TrapFields row = {"17", "", 0, 2, 3, "--"};
    std::vector<TrapChange> expected;
    for (const unsigned word : {0U, 0x80000000U, 0xFFFFFFFFU}) {
        request.oHead.uiWord3 = word;
        trapHost.changeResult = static_cast<int>(word % 1000) - 1;
        EXPECT_EQ(remove(), trapHost.changeResult);
        expected.push_back({"deleteTrapAddr", row, word});
    }
    EXPECT_EQ(trapHost.changes, expected);
    expectNoLine();
}

}  // namespace
