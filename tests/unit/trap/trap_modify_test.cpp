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

constexpr const char* kUnknownParameter = "failed to modify trap, unknown parameter.";
constexpr const char* kNoIndex = "can't find trap index, old method is not supporttd.";

class TrapModify : public talvik::test::TrapHandlerTest {
protected:
    void expectRefusal(const char* line)
    {
        EXPECT_EQ(modify(), kRefused);
        expectNoChange();
        expectOnlyLine("OnModifyTable", 0x1002E, line);
        expectBalancedTraces();
    }
};

TEST_F(TrapModify, ReplacesTheRowWithCreateTimeValuesForWhatIsLeftOut)
{
    listed({"17", "192.0.2.9", 9, 3, 7, "operator"});
    text(1, "192.0.2.1");
    number(2, 162);
    text(4, "17");

    EXPECT_EQ(modify(), 0);

    expectOnlyChange("modifyTrapAddr", {"17", "192.0.2.1", 162, 2, 1, "--"});
    EXPECT_TRUE(response.oRecords.empty());
    expectNoLine();
    expectBalancedTraces();
}

TEST_F(TrapModify, TakesEveryColumn)
{
    text(1, "192.0.2.1");
    number(2, 162);
    text(4, "17");
    number(5, 3);
    text(6, "192.0.2.6");
    number(7, 7);
    text(8, "operator");

    EXPECT_EQ(modify(), 0);

    expectOnlyChange("modifyTrapAddr", {"17", "192.0.2.6", 162, 3, 7, "operator"});
}

TEST_F(TrapModify, IsRefusedWithoutAnIndex)
{
    text(1, "192.0.2.1");
    number(2, 162);

    expectRefusal(kNoIndex);

    EXPECT_EQ(trapCalls(), Calls());
}

TEST_F(TrapModify, IsRefusedWithoutAnIndexWhateverElseItHolds)
{
    number(1, 1);
    text(2, "162");
    text(5, "2");
    number(6, 1);

    expectRefusal(kNoIndex);
}

TEST_F(TrapModify, IsRefusedWithoutAnyCell)
{
    expectRefusal(kNoIndex);
}

TEST_F(TrapModify, ChecksTheWholeRowInOrderTheIndexFirst)
{
    text(1, "192.0.2.1");
    number(2, 162);
    text(4, "17");

    modify();

    EXPECT_EQ(trapCalls(), Calls({"CheckTrapIndOK", "CheckIPAddrOK", "CheckTrapPortOK",
                                  "CheckTrapVerOK", "CheckTrapTypeOK", "modifyTrapAddr"}));
    const TrapFields row = {"17", "192.0.2.1", 162, 2, 1, "--"};
    const std::vector<std::pair<std::string, TrapFields>> seen = {{"CheckTrapIndOK", row},
                                                                  {"CheckTrapPortOK", row},
                                                                  {"CheckTrapVerOK", row},
                                                                  {"CheckTrapTypeOK", row}};
    EXPECT_EQ(trapHost.checks, seen);
}

TEST_F(TrapModify, ChecksEveryColumnBeforeTheWholeRow)
{
    text(1, "192.0.2.1");
    number(2, 162);
    text(4, "17");
    number(5, 1);
    text(6, "192.0.2.6");
    number(7, 7);
    text(8, "operator");

    modify();

    EXPECT_EQ(trapCalls(),
              Calls({"CheckTrapVerOK", "CheckTrapTypeOK",  // the request as a whole
                     "CheckTrapVerOK", "CheckIPAddrOK", "CheckTrapTypeOK", "CheckTrapUserOK",
                     "CheckTrapIndOK", "CheckIPAddrOK", "CheckTrapPortOK", "CheckTrapVerOK",
                     "CheckTrapTypeOK", "modifyTrapAddr"}));
}

/// One thing that the host refuses, and the last check that is then made.
struct Stop {
    const char* name;
    std::string index;
    std::string address;
    unsigned port;
    std::set<unsigned> versions;
    std::set<unsigned> types;
    std::vector<std::string> calls;

    friend std::ostream& operator<<(std::ostream& os, const Stop& row) { return os << row.name; }
};

class TrapModifyStop : public TrapModify, public testing::WithParamInterface<Stop> {};

TEST_P(TrapModifyStop, EndsTheChecks)
{
    trapHost.refusedIndexes = {"bad index"};
    trapHost.refusedAddresses = {"bad address"};
    trapHost.refusedPorts = {0};
    trapHost.refusedVersions = GetParam().versions;
    trapHost.refusedTypes = GetParam().types;
    text(1, GetParam().address);
    number(2, GetParam().port);
    text(4, GetParam().index);

    expectRefusal(kUnknownParameter);

    EXPECT_EQ(trapCalls(), GetParam().calls);
}

const Stop kStops[] = {
    {"Index", "bad index", "bad address", 0, {2}, {1}, {"CheckTrapIndOK"}},
    {"Address", "17", "bad address", 0, {2}, {1}, {"CheckTrapIndOK", "CheckIPAddrOK"}},
    {"Port",
     "17",
     "192.0.2.1",
     0,
     {2},
     {1},
     {"CheckTrapIndOK", "CheckIPAddrOK", "CheckTrapPortOK"}},
    {"Version",
     "17",
     "192.0.2.1",
     162,
     {2},
     {1},
     {"CheckTrapIndOK", "CheckIPAddrOK", "CheckTrapPortOK", "CheckTrapVerOK"}},
    {"Type",
     "17",
     "192.0.2.1",
     162,
     {},
     {1},
     {"CheckTrapIndOK", "CheckIPAddrOK", "CheckTrapPortOK", "CheckTrapVerOK", "CheckTrapTypeOK"}},
};

INSTANTIATE_TEST_SUITE_P(Checks, TrapModifyStop, testing::ValuesIn(kStops),
                         [](const auto& row) { return row.param.name; });

TEST_F(TrapModify, IsRefusedByThePreCheckBeforeTheIndexIsChecked)
{
    text(1, "192.0.2.1");
    number(2, 162);
    text(4, "bad index");
    number(5, 9);
    trapHost.refusedVersions = {9};
    trapHost.refusedIndexes = {"bad index"};

    expectRefusal(kUnknownParameter);

    EXPECT_EQ(trapCalls(), Calls({"CheckTrapVerOK"}));
}

TEST_F(TrapModify, IsRefusedWithoutAnAddress)
{
    number(2, 162);
    text(4, "17");

    expectRefusal(kUnknownParameter);
}

TEST_F(TrapModify, DropsInvalidColumnsThatThePreCheckDoesNotLookAt)
{
    text(1, "192.0.2.1");
    number(2, 162);
    text(4, "17");
    text(6, "bad address");
    text(8, "nobody");
    trapHost.refusedAddresses = {"bad address"};
    trapHost.refusedUsers = {"nobody"};

    EXPECT_EQ(modify(), 0);

    expectOnlyChange("modifyTrapAddr", {"17", "192.0.2.1", 162, 2, 1, "--"});
    expectNoLine();
}

TEST_F(TrapModify, PassesTheHostsResultAndTheHeadersWordOn)
{
    text(1, "192.0.2.1");
    number(2, 162);
    text(4, "17");
    const TrapFields row = {"17", "192.0.2.1", 162, 2, 1, "--"};
    std::vector<TrapChange> expected;
    for (const unsigned word : {0U, 0x80000000U, 0xFFFFFFFFU}) {
        request.oHead.uiWord3 = word;
        trapHost.changeResult = static_cast<int>(word % 1000) - 1;
        EXPECT_EQ(modify(), trapHost.changeResult);
        expected.push_back({"modifyTrapAddr", row, word});
    }
    EXPECT_EQ(trapHost.changes, expected);
    expectNoLine();
}

TEST_F(TrapModify, FailsOnAnIndexThatIsANumberBeforeItMissesThePort)
{
    text(1, "192.0.2.1");
    number(4, 17);

    EXPECT_EQ(textOfThrown([this] { modify(); }), notString(4));
    expectNoChange();
    expectBalancedTraces();
}

TEST_F(TrapModify, FailsWithTheLookUpWithoutAPort)
{
    text(1, "192.0.2.1");
    text(4, "17");

    EXPECT_EQ(textOfThrown([this] { modify(); }), noSuchCell(2));
    EXPECT_EQ(trapCalls(), Calls());
    expectNoChange();
    expectNoLine();
    expectBalancedTraces();
}

TEST_F(TrapModify, FailsOnCellsOfTheWrongKind)
{
    text(4, "17");
    text(2, "162");
    EXPECT_EQ(textOfThrown([this] { modify(); }), notNumerical(2));

    request[0]->clear();
    text(4, "17");
    number(2, 162);
    number(1, 1);
    EXPECT_EQ(textOfThrown([this] { modify(); }), notString(1));

    expectNoChange();
    expectNoLine();
    expectBalancedTraces();
}

TEST_F(TrapModify, FailsWithoutARecord)
{
    request.clear();

    EXPECT_EQ(textOfThrown([this] { modify(); }), kNoRecord);
    expectNoChange();
    expectBalancedTraces();
}

}  // namespace
