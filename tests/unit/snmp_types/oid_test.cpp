#include "snmp_pp/oid.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <utility>

namespace {

using Snmp_pp::Oid;
using Snmp_pp::SmiUINT32;
using Snmp_pp::SnmpSyntax;

TEST(Oid, IsInvalidAndEmptyWhenDefaultMade)
{
    const Oid oid;

    EXPECT_FALSE(oid.valid());
    EXPECT_EQ(oid.len(), 0u);
    EXPECT_EQ(oid.get_syntax(), 6u);
    EXPECT_STREQ(oid.get_printable(), "");
}

TEST(Oid, IsMadeFromNumbers)
{
    const SmiUINT32 ids[] = {1, 3, 6};

    EXPECT_STREQ(Oid(ids, 3).get_printable(), "1.3.6");
    EXPECT_FALSE(Oid(ids, 0).valid());
    EXPECT_FALSE(Oid(ids, -1).valid());
    EXPECT_FALSE(Oid(nullptr, 3).valid());
}

TEST(Oid, BuildsABindingsOidFromBaseAndSuffix)
{
    const Oid base("1.3.6.1.4.1.99999.2.91.10.3.1.1");

    Oid oid(base);
    oid += 14;
    oid += 0u;

    EXPECT_STREQ(oid.get_printable(), "1.3.6.1.4.1.99999.2.91.10.3.1.1.14.0");
    EXPECT_EQ(base.len(), 13u);
}

TEST(Oid, AppendsAnotherAndItself)
{
    Oid oid("1.3");

    oid += Oid("6.1");
    oid += oid;
    oid += Oid();

    EXPECT_STREQ(oid.get_printable(), "1.3.6.1.1.3.6.1");
}

TEST(Oid, SetsNoLimitOf128SubIdentifiers)
{
    Oid oid;

    for (SmiUINT32 i = 0; i < 130; ++i) {
        oid += i;
    }

    EXPECT_EQ(oid.len(), 130u);
    EXPECT_TRUE(oid.valid());
    EXPECT_EQ(oid[129], 129u);
}

TEST(Oid, PrintsAndReadsAThousandSubIdentifiers)
{
    Oid oid;
    std::string text;
    for (SmiUINT32 i = 0; i < 1000; ++i) {
        oid += 4294967295u - i;
        text += (i ? "." : "") + std::to_string(4294967295u - i);
    }

    EXPECT_EQ(oid.get_printable(), text);
    EXPECT_EQ(Oid(text.c_str()), oid);
}

TEST(Oid, AnswersZeroPastTheEnd)
{
    const Oid oid("1.3");

    EXPECT_EQ(oid[1], 3u);
    EXPECT_EQ(oid[2], 0u);
    EXPECT_EQ(oid[4294967295u], 0u);
}

TEST(Oid, TakesWritesToASubIdentifier)
{
    Oid oid("1.3.6");
    ASSERT_STREQ(oid.get_printable(), "1.3.6");

    oid[1] = 5;
    EXPECT_STREQ(oid.get_printable(), "1.5.6");

    oid[3] = 9;  // past the end
    EXPECT_STREQ(oid.get_printable(), "1.5.6");
    EXPECT_EQ(oid[3], 0u);
}

TEST(Oid, TrimsAtMostAll)
{
    Oid oid("1.3.6.1");

    oid.trim();
    EXPECT_STREQ(oid.get_printable(), "1.3.6");
    oid.trim(0);
    EXPECT_STREQ(oid.get_printable(), "1.3.6");
    oid.trim(2);
    EXPECT_STREQ(oid.get_printable(), "1");
    oid.trim(5);
    EXPECT_FALSE(oid.valid());
    EXPECT_STREQ(oid.get_printable(), "");
}

TEST(Oid, TakesDataAlsoFromItself)
{
    const SmiUINT32 ids[] = {1, 3, 6, 1};
    Oid oid;

    oid.set_data(ids, 4);
    EXPECT_STREQ(oid.get_printable(), "1.3.6.1");
    oid.set_data(&oid[1], 2);
    EXPECT_STREQ(oid.get_printable(), "3.6");
    oid.set_data(nullptr, 2);
    EXPECT_FALSE(oid.valid());
}

TEST(Oid, KeepsItsValueWhenAssignedToItself)
{
    Oid oid("1.3");
    const Oid& same = oid;

    oid = same;
    oid = static_cast<const SnmpSyntax&>(same);

    EXPECT_STREQ(oid.get_printable(), "1.3");
}

TEST(Oid, CopiesAreIndependent)
{
    Oid original("1.3");
    const Oid copy(original);
    const std::unique_ptr<SnmpSyntax> clone(original.clone());
    const char* copied = copy.get_printable();

    original += 6;
    original.clear();

    EXPECT_EQ(copy.get_printable(), copied);
    EXPECT_STREQ(copy.get_printable(), "1.3");
    EXPECT_STREQ(clone->get_printable(), "1.3");
    EXPECT_EQ(clone->get_syntax(), 6u);
    EXPECT_FALSE(original.valid());
}

/// 1, 2 and so on.
Oid counting(SmiUINT32 length)
{
    Oid oid;
    for (SmiUINT32 i = 1; i <= length; ++i) {
        oid += i;
    }
    return oid;
}

/// Lengths about the number of sub-identifiers that need no allocation.
class OidOfLength : public testing::TestWithParam<SmiUINT32> {};

TEST_P(OidOfLength, IsCopiedOverAnyOther)
{
    const auto oid = counting(GetParam());
    for (const SmiUINT32 length : {0U, 3U, 24U, 25U, 60U}) {
        auto copy = counting(length);
        copy = oid;
        EXPECT_EQ(copy, oid);

        copy += 7;
        EXPECT_EQ(copy.len(), GetParam() + 1);
        EXPECT_EQ(copy[GetParam()], 7u);
        EXPECT_EQ(oid, counting(GetParam()));
    }
}

TEST_P(OidOfLength, LeavesAnEmptyOneWhereItIsMovedFrom)
{
    for (const SmiUINT32 length : {0U, 3U, 24U, 25U, 60U}) {
        auto source = counting(GetParam());
        ASSERT_STRNE(source.get_printable(), "none");
        auto target = counting(length);
        ASSERT_STRNE(target.get_printable(), "none");

        // NOLINTBEGIN(bugprone-use-after-move): what is left behind is part of the contract
        target = std::move(source);

        EXPECT_EQ(target, counting(GetParam()));
        EXPECT_STREQ(target.get_printable(), counting(GetParam()).get_printable());
        EXPECT_FALSE(source.valid());
        EXPECT_STREQ(source.get_printable(), "");
        source += 5;
        EXPECT_STREQ(source.get_printable(), "5");

        const Oid made(std::move(target));
        EXPECT_EQ(made, counting(GetParam()));
        EXPECT_STREQ(target.get_printable(), "");
        // NOLINTEND(bugprone-use-after-move)
    }
}

TEST_P(OidOfLength, AppendsItselfAndTakesItsOwnData)
{
    auto oid = counting(GetParam());

    oid += oid;

    ASSERT_EQ(oid.len(), 2 * GetParam());
    for (SmiUINT32 i = 0; i < GetParam(); ++i) {
        EXPECT_EQ(oid[i], i + 1);
        EXPECT_EQ(oid[GetParam() + i], i + 1);
    }
    oid.set_data(&oid[GetParam()], GetParam());
    EXPECT_EQ(oid, counting(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Lengths, OidOfLength, testing::Values(1, 12, 13, 23, 24, 25, 49, 128));

struct Order {
    const char* name;
    const char* a;
    const char* b;
    int sign;

    friend std::ostream& operator<<(std::ostream& os, const Order& row) { return os << row.name; }
};

class OidOrder : public testing::TestWithParam<Order> {};

TEST_P(OidOrder, IsLexicographic)
{
    const Oid a(GetParam().a);
    const Oid b(GetParam().b);
    const int sign = GetParam().sign;

    EXPECT_EQ(a == b, sign == 0);
    EXPECT_EQ(a != b, sign != 0);
    EXPECT_EQ(a < b, sign < 0);
    EXPECT_EQ(a <= b, sign <= 0);
    EXPECT_EQ(a > b, sign > 0);
    EXPECT_EQ(a >= b, sign >= 0);
    EXPECT_EQ(a.nCompare(1000, b), sign);
}

const Order kOrders[] = {
    {"Same", "1.3.6", "1.3.6", 0},
    {"BothEmpty", "", "", 0},
    {"PrefixIsLesser", "1.3", "1.3.0", -1},
    {"EmptyIsLeast", "", "0", -1},
    {"LongerIsGreater", "1.3.0", "1.3", 1},
    {"LaterNumberDecides", "1.3.6", "1.3.7", -1},
    {"EarlierNumberBeatsLength", "1.4", "1.3.9.9.9", 1},
    {"NumbersAreUnsigned", "1.4294967295", "1.1", 1},
};

INSTANTIATE_TEST_SUITE_P(Row, OidOrder, testing::ValuesIn(kOrders),
                         [](const auto& row) { return row.param.name; });

TEST(OidOrder, OfTheFirstFewIgnoresTheRest)
{
    EXPECT_EQ(Oid("1.3.6").nCompare(2, "1.3.7"), 0);
    EXPECT_EQ(Oid("1.3.6").nCompare(3, "1.3.7"), -1);
    EXPECT_EQ(Oid("1.3.6").nCompare(2, "1"), 1);
    EXPECT_EQ(Oid("1").nCompare(2, "1.3.6"), -1);
    EXPECT_EQ(Oid("1").nCompare(0, "2"), 0);
}

TEST(OidOrder, ComparesWithText)
{
    EXPECT_TRUE(Oid("1.3") == ".1.3");
    EXPECT_TRUE(Oid("1.3") != "None");
}

}  // namespace
