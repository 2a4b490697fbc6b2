#include "host/snmp/trap_binding.h"

#include <agent_pp/snmp_pp_ext.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace {

using Agentpp::Vbx;
using Snmp_pp::Oid;
using talvik::ObjectId;
using talvik::Syntax;
using talvik::toObjectId;
using talvik::toTrapBinding;

const Oid kName("1.3.6.1.4.1.99999.1.0");
const ObjectId kId = {1, 3, 6, 1, 4, 1, 99999, 1, 0};

struct Number {
    const char* name;
    Vbx binding;
    Syntax syntax;
    std::int64_t number;
};

class NumberTest : public testing::TestWithParam<Number> {};

TEST_P(NumberTest, KeepsSyntaxAndValue)
{
    std::string problem;
    const auto binding = toTrapBinding(GetParam().binding, problem);
    ASSERT_TRUE(binding) << problem;
    EXPECT_EQ(binding->name, kId);
    EXPECT_EQ(binding->value.syntax, GetParam().syntax);
    EXPECT_EQ(binding->value.number, GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    OfEachSyntax, NumberTest,
    testing::Values(
        Number{"Integer", Vbx(kName, Snmp_pp::SnmpInt32(-5)), Syntax::Integer, -5},
        Number{"LeastInteger", Vbx(kName, Snmp_pp::SnmpInt32(std::numeric_limits<int>::min())),
               Syntax::Integer, std::numeric_limits<int>::min()},
        Number{"Gauge", Vbx(kName, Snmp_pp::Gauge32(4294967295U)), Syntax::Gauge32, 4294967295},
        Number{"Unsigned", Vbx(kName, Snmp_pp::SnmpUInt32(7)), Syntax::Gauge32, 7},
        Number{"Counter64", Vbx(kName, Snmp_pp::Counter64(1, 2)), Syntax::Counter64, 4294967298},
        Number{"GreatestCounter64", Vbx(kName, Snmp_pp::Counter64(0xFFFFFFFFU, 0xFFFFFFFFU)),
               Syntax::Counter64, -1}),
    [](const auto& test) { return test.param.name; });

TEST(TrapBinding, KeepsOctetsWithTheirNuls)
{
    const unsigned char bytes[] = {'a', 0, 0xFF};
    std::string problem;
    const auto binding = toTrapBinding(Vbx(kName, Snmp_pp::OctetStr(bytes, 3)), problem);
    ASSERT_TRUE(binding) << problem;
    EXPECT_EQ(binding->value.syntax, Syntax::OctetString);
    EXPECT_EQ(binding->value.octets, std::string("a\0\xFF", 3));
}

TEST(TrapBinding, KeepsAnEmptyText)
{
    std::string problem;
    const auto binding = toTrapBinding(Vbx(kName, Snmp_pp::OctetStr()), problem);
    ASSERT_TRUE(binding) << problem;
    EXPECT_EQ(binding->value.octets, "");
}

TEST(TrapBinding, RefusesAValueThatNoNotificationCarries)
{
    std::string problem;
    EXPECT_FALSE(toTrapBinding(Vbx(kName), problem));
    EXPECT_EQ(problem, "a value of syntax 5 cannot be sent in a notification");
    EXPECT_FALSE(toTrapBinding(Vbx(kName, Oid("1.3.6")), problem));
    EXPECT_EQ(problem, "a value of syntax 6 cannot be sent in a notification");
}

TEST(TrapBinding, RefusesANameThatIsNone)
{
    std::string problem;
    EXPECT_FALSE(toTrapBinding(Vbx(Oid("1"), Snmp_pp::SnmpInt32(1)), problem));
    EXPECT_EQ(problem, "its name has 1 sub-identifiers, 2 to 128 are due");
    Oid tooLong;
    for (int added = 0; added < 129; ++added) {
        tooLong += 1U;
    }
    EXPECT_FALSE(toTrapBinding(Vbx(tooLong, Snmp_pp::SnmpInt32(1)), problem));
    EXPECT_EQ(problem, "its name has 129 sub-identifiers, 2 to 128 are due");
    tooLong.trim();
    EXPECT_TRUE(toTrapBinding(Vbx(tooLong, Snmp_pp::SnmpInt32(1)), problem));
}

TEST(TrapBinding, AnInvalidOidIsEmpty)
{
    EXPECT_EQ(toObjectId(Oid("1.3.None")), ObjectId());
    EXPECT_EQ(toObjectId(Oid("1.3.4294967295")), (ObjectId{1, 3, 4294967295}));
}

}  // namespace
