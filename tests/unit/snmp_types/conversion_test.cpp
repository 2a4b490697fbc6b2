#include "agent_pp/snmp_pp_ext.h"
#include "snmp_pp/snmp_pp.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>

namespace {

using Agentpp::Oidx;
using Snmp_pp::Counter64;
using Snmp_pp::Gauge32;
using Snmp_pp::OctetStr;
using Snmp_pp::Oid;
using Snmp_pp::SnmpInt32;
using Snmp_pp::SnmpSyntax;
using Snmp_pp::SnmpUInt32;

template <typename Value, typename... Arguments>
std::shared_ptr<SnmpSyntax> made(Arguments... arguments)
{
    return std::make_shared<Value>(arguments...);
}

/// An assignment between two values that are known only as their base.
struct Assignment {
    const char* name;
    std::shared_ptr<SnmpSyntax> target;
    std::shared_ptr<SnmpSyntax> source;
    const char* printable;  // null when it does not fit

    friend std::ostream& operator<<(std::ostream& os, const Assignment& row)
    {
        return os << row.name;
    }
};

class Conversion : public testing::TestWithParam<Assignment> {};

TEST_P(Conversion, FitsOrMakesTheTargetInvalid)
{
    const std::unique_ptr<SnmpSyntax> target(GetParam().target->clone());
    const auto syntax = target->get_syntax();
    target->get_printable();

    *target = *GetParam().source;

    EXPECT_EQ(target->get_syntax(), syntax);
    EXPECT_EQ(target->valid(), GetParam().printable != nullptr);
    if (GetParam().printable) {
        EXPECT_STREQ(target->get_printable(), GetParam().printable);
    }
}

const auto kInt = made<SnmpInt32>(-5);
const auto kUInt = made<SnmpUInt32>(4294967295u);
const auto kGauge = made<Gauge32>(7u);
const auto kCounter = made<Counter64>(1ull << 40);
const auto kOctets = made<OctetStr>("12");
const auto kOid = made<Oid>("1.3");
const auto kOidx = made<Oidx>("1.4");

const Assignment kAssignments[] = {
    {"IntFromInt", made<SnmpInt32>(1), kInt, "-5"},
    {"IntFromUnsigned", kInt, kUInt, "-1"},
    {"IntFromGauge", kInt, kGauge, "7"},
    {"IntFromCounter", kInt, kCounter, nullptr},
    {"IntFromOctets", kInt, kOctets, nullptr},
    {"IntFromOid", kInt, kOid, nullptr},
    {"UnsignedFromInt", kUInt, kInt, "4294967291"},
    {"UnsignedFromGauge", kUInt, kGauge, "7"},
    {"UnsignedFromCounter", kUInt, kCounter, nullptr},
    {"GaugeFromUnsigned", kGauge, kUInt, "4294967295"},
    {"GaugeFromInt", kGauge, made<SnmpInt32>(3), "3"},
    {"GaugeFromOctets", kGauge, kOctets, nullptr},
    {"CounterFromCounter", made<Counter64>(1u), kCounter, "1099511627776"},
    {"CounterFromUnsigned", kCounter, kUInt, "4294967295"},
    {"CounterFromInt", kCounter, kInt, "4294967291"},
    {"CounterFromOctets", kCounter, kOctets, nullptr},
    {"OctetsFromOctets", made<OctetStr>("x"), kOctets, "12"},
    {"OctetsFromInt", kOctets, kInt, nullptr},
    {"OctetsFromOid", kOctets, kOid, nullptr},
    {"OidFromOid", made<Oid>("1"), kOid, "1.3"},
    {"OidFromOidx", kOid, kOidx, "1.4"},
    {"OidxFromOid", kOidx, kOid, "1.3"},
    {"OidFromOctets", kOid, kOctets, nullptr},
    {"OidFromInt", kOid, kInt, nullptr},
};

INSTANTIATE_TEST_SUITE_P(Row, Conversion, testing::ValuesIn(kAssignments),
                         [](const auto& row) { return row.param.name; });

class InvalidValue : public testing::TestWithParam<Assignment> {
protected:
    void SetUp() override
    {
        value_.reset(GetParam().target->clone());
        *value_ = *GetParam().source;
        ASSERT_FALSE(value_->valid());
    }

    std::unique_ptr<SnmpSyntax> value_;
};

TEST_P(InvalidValue, StaysInvalidInItsCopiesUntilItIsSet)
{
    const std::unique_ptr<SnmpSyntax> clone(value_->clone());
    const std::unique_ptr<SnmpSyntax> assigned(GetParam().target->clone());
    *assigned = *value_;

    EXPECT_FALSE(clone->valid());
    EXPECT_FALSE(assigned->valid());

    *value_ = *GetParam().target;
    EXPECT_TRUE(value_->valid());
    EXPECT_STREQ(value_->get_printable(), GetParam().target->get_printable());
}

const Assignment kInvalid[] = {
    {"Int", kInt, kOid, nullptr},       {"Unsigned", kUInt, kOid, nullptr},
    {"Gauge", kGauge, kOid, nullptr},   {"Counter", kCounter, kOid, nullptr},
    {"Octets", kOctets, kOid, nullptr}, {"Oid", kOid, kInt, nullptr},
};

INSTANTIATE_TEST_SUITE_P(Row, InvalidValue, testing::ValuesIn(kInvalid),
                         [](const auto& row) { return row.param.name; });

}  // namespace
