#include "snmp_pp/ctr64.h"
#include "snmp_pp/gauge.h"
#include "snmp_pp/integer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>

namespace {

using Snmp_pp::Counter64;
using Snmp_pp::Gauge32;
using Snmp_pp::SnmpInt32;
using Snmp_pp::SnmpSyntax;
using Snmp_pp::SnmpUInt32;

template <typename Value>
class Number : public testing::Test {
};

using Numbers = testing::Types<SnmpInt32, SnmpUInt32, Gauge32, Counter64>;
struct Names {
    template <typename Value>
    static std::string GetName(int)
    {
        if constexpr (std::is_same_v<Value, SnmpInt32>) {
            return "SnmpInt32";
        } else if constexpr (std::is_same_v<Value, SnmpUInt32>) {
            return "SnmpUInt32";
        } else if constexpr (std::is_same_v<Value, Gauge32>) {
            return "Gauge32";
        } else {
            return "Counter64";
        }
    }
};

TYPED_TEST_SUITE(Number, Numbers, Names);

TYPED_TEST(Number, IsZeroAndValidWhenDefaultMadeOrCleared)
{
    TypeParam number;
    EXPECT_TRUE(number.valid());
    EXPECT_STREQ(number.get_printable(), "0");

    number = 5u;
    number.clear();
    EXPECT_TRUE(number.valid());
    EXPECT_STREQ(number.get_printable(), "0");
}

TYPED_TEST(Number, PrintsANewTextAfterEachAssignment)
{
    TypeParam number(1u);
    EXPECT_STREQ(number.get_printable(), "1");

    number = 2u;
    EXPECT_STREQ(number.get_printable(), "2");
    number = TypeParam(3u);
    EXPECT_STREQ(number.get_printable(), "3");
}

TYPED_TEST(Number, CopiesAreIndependent)
{
    TypeParam original(1u);
    const TypeParam copy(original);
    const std::unique_ptr<SnmpSyntax> clone(original.clone());

    original = 2u;

    EXPECT_STREQ(copy.get_printable(), "1");
    EXPECT_STREQ(clone->get_printable(), "1");
    EXPECT_EQ(clone->get_syntax(), original.get_syntax());
    EXPECT_NE(dynamic_cast<TypeParam*>(clone.get()), nullptr);
}

TYPED_TEST(Number, KeepsItsValueWhenAssignedToItself)
{
    TypeParam number(7u);
    const TypeParam& same = number;

    number = same;
    number = static_cast<const SnmpSyntax&>(same);

    EXPECT_TRUE(number.valid());
    EXPECT_STREQ(number.get_printable(), "7");
}

TEST(NumberValue, HasTheSyntaxOfItsType)
{
    EXPECT_EQ(SnmpInt32().get_syntax(), 2u);
    EXPECT_EQ(SnmpUInt32().get_syntax(), 66u);
    EXPECT_EQ(Gauge32().get_syntax(), 66u);
    EXPECT_EQ(Counter64().get_syntax(), 70u);
}

TEST(NumberValue, PrintsPlainDecimal)
{
    EXPECT_STREQ(SnmpInt32(-5).get_printable(), "-5");
    EXPECT_STREQ(SnmpInt32(std::numeric_limits<std::int32_t>::min()).get_printable(),
                 "-2147483648");
    EXPECT_STREQ(SnmpUInt32(4294967295u).get_printable(), "4294967295");
    EXPECT_STREQ(Gauge32(4294967295u).get_printable(), "4294967295");
    EXPECT_STREQ(Counter64(18446744073709551615u).get_printable(), "18446744073709551615");
}

TEST(NumberValue, ConvertsToItsCppNumber)
{
    const std::int32_t signedNumber = SnmpInt32(-5);
    const std::uint32_t unsignedNumber = SnmpUInt32(4294967295u);
    const std::uint32_t gauge = Gauge32(7);
    const std::uint64_t counter = Counter64(1ull << 40);

    EXPECT_EQ(signedNumber, -5);
    EXPECT_EQ(unsignedNumber, 4294967295u);
    EXPECT_EQ(gauge, 7u);
    EXPECT_EQ(counter, 1099511627776u);
}

TEST(NumberValue, OfSixtyFourBitsHasTwoWords)
{
    const Counter64 number(0x0000000D, 0x00C900B6);

    EXPECT_EQ(number, 0xD00C900B6u);
    EXPECT_EQ(number.high(), 0xDu);
    EXPECT_EQ(number.low(), 0x00C900B6u);
    EXPECT_STREQ(Counter64(0xFFFFFFFF, 0).get_printable(), "18446744069414584320");
}

}  // namespace
