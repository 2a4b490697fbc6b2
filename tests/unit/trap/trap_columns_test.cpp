#include "tests/unit/trap/trap_handler_test.h"

namespace {

using namespace std::string_literals;

using talvik::test::fieldsOf;
using talvik::test::kNoRecord;
using talvik::test::notNumerical;
using talvik::test::notString;
using talvik::test::textOfThrown;
using talvik::test::TrapFields;

using Seen = std::vector<std::pair<std::string, TrapFields>>;

// A default record: the checks must see one but for the field under test.
const TrapFields kVersionSeven = {"", "", 0, 7, 3, "--"};
const TrapFields kTypeSeven = {"", "", 0, 2, 7, "--"};
const TrapFields kUserOperator = {"", "", 0, 2, 3, "operator"};

class TrapPreCheck : public talvik::test::TrapHandlerTest {
protected:
    bool preCheck() { return handler.CheckParam(request); }
};

TEST_F(TrapPreCheck, WantsAnAddress)
{
    number(2, 162);
    text(4, "17");

    EXPECT_FALSE(preCheck());
    EXPECT_EQ(trapCalls(), Calls());
    expectNoLine();
    expectBalancedTraces();
}

TEST_F(TrapPreCheck, IsContentWithTagOneUnread)
{
    number(1, 1);
    number(6, 1);

    EXPECT_TRUE(preCheck());
    EXPECT_EQ(trapCalls(), Calls());
    expectBalancedTraces();
}

TEST_F(TrapPreCheck, AnswersWhatTheHostSaysOfTagSix)
{
    text(6, "trap.example.net");
    EXPECT_TRUE(preCheck());

    trapHost.refusedAddresses = {"trap.example.net"};
    EXPECT_FALSE(preCheck());

    EXPECT_EQ(trapHost.addressesChecked, Calls({"trap.example.net", "trap.example.net"}));
    expectNoLine();
}

TEST_F(TrapPreCheck, ChecksVersionThenTypeThenTheAddress)
{
    text(6, "trap.example.net");
    number(7, 7);
    number(5, 7);

    EXPECT_TRUE(preCheck());

    EXPECT_EQ(trapCalls(), Calls({"CheckTrapVerOK", "CheckTrapTypeOK", "CheckIPAddrOK"}));
    EXPECT_EQ(trapHost.checks,
              Seen({{"CheckTrapVerOK", kVersionSeven}, {"CheckTrapTypeOK", kTypeSeven}}));
}

TEST_F(TrapPreCheck, StopsAtARefusedVersionWithoutReadingOn)
{
    text(1, "192.0.2.1");
    number(5, 7);
    text(7, "7");
    trapHost.refusedVersions = {7};

    EXPECT_FALSE(preCheck());
    EXPECT_EQ(trapCalls(), Calls({"CheckTrapVerOK"}));
}

TEST_F(TrapPreCheck, StopsAtARefusedTypeWithoutReadingOn)
{
    number(5, 7);
    number(6, 1);
    number(7, 7);
    trapHost.refusedTypes = {7};

    EXPECT_FALSE(preCheck());
    EXPECT_EQ(trapCalls(), Calls({"CheckTrapVerOK", "CheckTrapTypeOK"}));
}

TEST_F(TrapPreCheck, FailsOnCellsOfTheWrongKind)
{
    text(5, "2");
    EXPECT_EQ(textOfThrown([this] { preCheck(); }), notNumerical(5));

    request[0]->clear();
    text(7, "2");
    EXPECT_EQ(textOfThrown([this] { preCheck(); }), notNumerical(7));

    request[0]->clear();
    number(6, 2);
    EXPECT_EQ(textOfThrown([this] { preCheck(); }), notString(6));

    EXPECT_EQ(trapCalls(), Calls());
    expectBalancedTraces();
}

TEST_F(TrapPreCheck, FailsWithoutARecord)
{
    request.clear();

    EXPECT_EQ(textOfThrown([this] { preCheck(); }), kNoRecord);
    expectBalancedTraces();
}

class TrapOverlay : public talvik::test::TrapHandlerTest {
protected:
    TrapFields overlay()
    {
        handler.CommonOperation(request, info);
        return fieldsOf(info);
    }

    const TrapFields before = {"17", "192.0.2.1", 162, 10, 11, "before"};
    tTrapDestInfo info = talvik::test::destinationOf(before);
};

TEST_F(TrapOverlay, OfAnEmptyRecordChangesNothing)
{
    EXPECT_EQ(overlay(), before);
    EXPECT_EQ(trapCalls(), Calls());
    expectBalancedTraces();
}

TEST_F(TrapOverlay, TakesTheFourOptionalColumns)
{
    number(5, 7);
    text(6, "192.0.2.6");
    number(7, 8);
    text(8, "operator");

    EXPECT_EQ(overlay(), TrapFields("17", "192.0.2.6", 162, 7, 8, "operator"));
}

TEST_F(TrapOverlay, LooksAtNoOtherColumn)
{
    number(1, 1);
    text(2, "162");
    text(3, "6");
    number(4, 1);

    EXPECT_EQ(overlay(), before);
}

TEST_F(TrapOverlay, ShowsEachCheckADefaultRecordButForTheFieldUnderTest)
{
    text(8, "operator");
    number(7, 7);
    text(6, "192.0.2.6");
    number(5, 7);

    overlay();

    EXPECT_EQ(trapCalls(),
              Calls({"CheckTrapVerOK", "CheckIPAddrOK", "CheckTrapTypeOK", "CheckTrapUserOK"}));
    EXPECT_EQ(trapHost.checks, Seen({{"CheckTrapVerOK", kVersionSeven},
                                     {"CheckTrapTypeOK", kTypeSeven},
                                     {"CheckTrapUserOK", kUserOperator}}));
    EXPECT_EQ(trapHost.addressesChecked, Calls({"192.0.2.6"}));
}

TEST_F(TrapOverlay, DropsEachColumnThatTheHostRefusesInSilence)
{
    number(5, 7);
    text(6, "192.0.2.6");
    number(7, 8);
    text(8, "operator");
    const TrapFields all = {"17", "192.0.2.6", 162, 7, 8, "operator"};

    trapHost.refusedVersions = {7};
    EXPECT_EQ(overlay(), TrapFields("17", "192.0.2.6", 162, 10, 8, "operator"));
    trapHost.reset();

    info = talvik::test::destinationOf(before);
    trapHost.refusedAddresses = {"192.0.2.6"};
    EXPECT_EQ(overlay(), TrapFields("17", "192.0.2.1", 162, 7, 8, "operator"));
    trapHost.reset();

    info = talvik::test::destinationOf(before);
    trapHost.refusedTypes = {8};
    EXPECT_EQ(overlay(), TrapFields("17", "192.0.2.6", 162, 7, 11, "operator"));
    trapHost.reset();

    info = talvik::test::destinationOf(before);
    trapHost.refusedUsers = {"operator"};
    EXPECT_EQ(overlay(), TrapFields("17", "192.0.2.6", 162, 7, 8, "before"));
    trapHost.reset();

    EXPECT_EQ(overlay(), all);
    expectNoLine();
}

TEST_F(TrapOverlay, FailsOnCellsOfTheWrongKindAndKeepsWhatItTookBefore)
{
    number(5, 7);
    number(6, 1);
    EXPECT_EQ(textOfThrown([this] { overlay(); }), notString(6));
    EXPECT_EQ(fieldsOf(info), TrapFields("17", "192.0.2.1", 162, 7, 11, "before"));

    request[0]->clear();
    text(5, "7");
    EXPECT_EQ(textOfThrown([this] { overlay(); }), notNumerical(5));

    request[0]->clear();
    text(7, "7");
    EXPECT_EQ(textOfThrown([this] { overlay(); }), notNumerical(7));

    expectBalancedTraces();
}

TEST_F(TrapOverlay, FailsWithoutARecord)
{
    request.clear();

    EXPECT_EQ(textOfThrown([this] { overlay(); }), kNoRecord);
    EXPECT_EQ(fieldsOf(info), before);
    expectBalancedTraces();
}

/// A user cell of any type, and its text form.
struct User {
    const char* name;
    CTLVCell::ETLVType type;
    std::string bytes;
    std::string user;

    friend std::ostream& operator<<(std::ostream& os, const User& row) { return os << row.name; }
};

class TrapUser : public TrapOverlay, public testing::WithParamInterface<User> {};

TEST_P(TrapUser, IsTakenInItsTextForm)
{
    cell(8, GetParam().type, GetParam().bytes);

    EXPECT_EQ(overlay(), TrapFields("17", "192.0.2.1", 162, 10, 11, GetParam().user));
}

const User kUsers[] = {
    {"Text", CTLVCell::TLV_STRING, "operator\0"s, "operator"},
    {"EmptyText", CTLVCell::TLV_STRING, "\0"s, ""},
    {"TextWithoutATerminator", CTLVCell::TLV_STRING, "operator", "operator"},
    {"TextThatGoesOnBehindANul", CTLVCell::TLV_STRING, "oper\0ator\0"s, "oper"},
    {"NoByte", CTLVCell::TLV_STRING, "", ""},
    {"Number", CTLVCell::TLV_UINT, "\x10\x27\0\0"s, "10000"},
    {"SignedNumber", CTLVCell::TLV_INT, "\xFE\xFF\xFF\xFF", "-2"},
    {"Octets", CTLVCell::TLV_OCTETS, "\x01\xAB", "01AB"},
};

INSTANTIATE_TEST_SUITE_P(Types, TrapUser, testing::ValuesIn(kUsers),
                         [](const auto& row) { return row.param.name; });

/// An address cell as a hostile peer may shape it.
class TrapAddressText : public TrapOverlay, public testing::WithParamInterface<User> {};

TEST_P(TrapAddressText, EndsAtItsNulOrItsLastByte)
{
    cell(6, GetParam().type, GetParam().bytes);

    EXPECT_EQ(overlay(), TrapFields("17", GetParam().user, 162, 10, 11, "before"));
}

const User kAddresses[] = {
    {"Text", CTLVCell::TLV_STRING, "192.0.2.6\0"s, "192.0.2.6"},
    {"WithoutATerminator", CTLVCell::TLV_STRING, "192.0.2.6", "192.0.2.6"},
    {"BehindANul", CTLVCell::TLV_STRING, "192.0.2.6\0x"s, "192.0.2.6"},
    {"NoByte", CTLVCell::TLV_STRING, "", ""},
};

INSTANTIATE_TEST_SUITE_P(Shapes, TrapAddressText, testing::ValuesIn(kAddresses),
                         [](const auto& row) { return row.param.name; });

}  // namespace
