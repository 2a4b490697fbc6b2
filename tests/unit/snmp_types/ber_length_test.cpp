#include "agent_pp/snmp_pp_ext.h"
#include "snmp_pp/snmp_pp.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

namespace {

using Snmp_pp::Counter64;
using Snmp_pp::Gauge32;
using Snmp_pp::OctetStr;
using Snmp_pp::Oid;
using Snmp_pp::SnmpInt32;
using Snmp_pp::SnmpSyntax;

struct Encoded {
    const char* name;
    std::shared_ptr<SnmpSyntax> value;
    int length;

    friend std::ostream& operator<<(std::ostream& os, const Encoded& row) { return os << row.name; }
};

class BerLength : public testing::TestWithParam<Encoded> {};

TEST_P(BerLength, CountsTagLengthAndContents)
{
    EXPECT_EQ(GetParam().value->get_asn1_length(), GetParam().length);
}

template <typename Value, typename Argument>
std::shared_ptr<SnmpSyntax> made(Argument argument)
{
    return std::make_shared<Value>(argument);
}

std::shared_ptr<SnmpSyntax> octets(std::size_t length)
{
    return std::make_shared<OctetStr>(std::string(length, 'x').c_str());
}

std::shared_ptr<SnmpSyntax> oidOf(int length)
{
    auto oid = std::make_shared<Oid>();
    for (int i = 0; i < length; ++i) {
        *oid += 1;
    }
    return oid;
}

const Encoded kEncodings[] = {
    {"IntZero", made<SnmpInt32>(0), 3},
    {"IntLastOfOneOctet", made<SnmpInt32>(127), 3},
    {"IntFirstOfTwoOctets", made<SnmpInt32>(128), 4},
    {"IntLeastOfOneOctet", made<SnmpInt32>(-128), 3},
    {"IntNegativeOfTwoOctets", made<SnmpInt32>(-129), 4},
    {"IntLastOfThreeOctets", made<SnmpInt32>(8388607), 5},
    {"IntGreatest", made<SnmpInt32>(2147483647), 6},
    {"IntLeast", made<SnmpInt32>(-2147483647 - 1), 6},
    {"GaugeZero", made<Gauge32>(0u), 3},
    {"GaugeNeedsASignOctet", made<Gauge32>(128u), 4},
    {"GaugeGreatest", made<Gauge32>(4294967295u), 7},
    {"CounterOfOneOctet", made<Counter64>(127u), 3},
    {"CounterOfEightOctets", made<Counter64>(9223372036854775807u), 10},
    {"CounterGreatest", made<Counter64>(18446744073709551615u), 11},
    {"OctetsNone", octets(0), 2},
    {"OctetsLastOfTheShortForm", octets(127), 129},
    {"OctetsFirstOfTheLongForm", octets(128), 131},
    {"OctetsLastOfOneLengthOctet", octets(255), 258},
    {"OctetsFirstOfTwoLengthOctets", octets(256), 260},
    {"OctetsFirstOfThreeLengthOctets", octets(65536), 65541},
    {"OidEmpty", made<Oid>(""), 3},
    {"OidOfOne", made<Oid>("1"), 3},
    {"OidOfTwoSharesOneArc", made<Oid>("1.3"), 3},
    {"OidSharedArcOfTwoOctets", made<Oid>("2.48"), 4},
    {"OidSharedArcBeyond32Bits", made<Oid>("2.4294967295"), 7},
    {"OidLastOfOneOctet", made<Oid>("1.3.127"), 4},
    {"OidFirstOfTwoOctets", made<Oid>("1.3.128"), 5},
    {"OidGreatestNumber", made<Oid>("1.3.4294967295"), 8},
    {"OidOfTheEnterprise", made<Oid>("1.3.6.1.4.1.99999"), 10},
    {"OidInTheLongForm", oidOf(129), 131},
};

INSTANTIATE_TEST_SUITE_P(Row, BerLength, testing::ValuesIn(kEncodings),
                         [](const auto& row) { return row.param.name; });

}  // namespace
