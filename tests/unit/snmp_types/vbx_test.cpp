#include "agent_pp/snmp_pp_ext.h"
#include "snmp_pp/snmp_pp.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using Agentpp::Oidx;
using Agentpp::Vbx;
using Snmp_pp::OctetStr;
using Snmp_pp::Oid;
using Snmp_pp::SnmpInt32;
using Snmp_pp::Vb;

TEST(Vbx, IsMadeFromOidAndValue)
{
    const Vbx vb("1.3", OctetStr("text"));

    EXPECT_TRUE(vb.valid());
    EXPECT_STREQ(vb.get_printable_oid(), "1.3");
    EXPECT_STREQ(vb.get_printable_value(), "text");
}

TEST(Vbx, IsMadeFromOidOidxAndVb)
{
    Vb plain(Oid("1.3"));
    plain.set_value(5);

    EXPECT_STREQ(Vbx(Oid("1.4")).get_printable_oid(), "1.4");
    EXPECT_STREQ(Vbx(Oidx("1.5")).get_printable_oid(), "1.5");
    EXPECT_STREQ(Vbx(plain).get_printable_value(), "5");
}

TEST(Vbx, GivesItsOidAsACopy)
{
    const Vbx vb("1.3", SnmpInt32(1));
    Oid oid;

    Oidx copy = vb.get_oid();
    copy += 6;
    vb.get_oid(oid);

    EXPECT_STREQ(vb.get_printable_oid(), "1.3");
    EXPECT_EQ(oid, "1.3");
    EXPECT_EQ(vb.get_oid().last(), 3u);
}

TEST(Vbx, StaysAVbxWhenCloned)
{
    const Vbx vb("1.3", SnmpInt32(1));

    const std::unique_ptr<Vbx> clone(vb.clone());

    EXPECT_EQ(clone->get_oid().last(), 3u);
    EXPECT_STREQ(clone->get_printable_value(), "1");
}

TEST(VbxArray, IsMadeAndReleasedAsOne)
{
    constexpr unsigned int kCount = 14;
    const Oidx base("1.3.6.1.4.1.99999.2.91.10.3.1.1");
    Vbx* vbs = new Vbx[kCount];
    const char* summary[kCount] = {};

    for (unsigned int i = 0; i < kCount; ++i) {
        Oid oid(base);
        oid += i + 1;
        oid += 0u;
        vbs[i].set_oid(oid);
        vbs[i].set_value(OctetStr(std::to_string(i).c_str()));
        summary[i] = vbs[i].get_printable_value();
    }

    EXPECT_STREQ(vbs[0].get_printable_oid(), "1.3.6.1.4.1.99999.2.91.10.3.1.1.1.0");
    EXPECT_STREQ(vbs[13].get_printable_oid(), "1.3.6.1.4.1.99999.2.91.10.3.1.1.14.0");
    for (unsigned int i = 0; i < kCount; ++i) {
        EXPECT_EQ(summary[i], std::to_string(i));
        EXPECT_EQ(summary[i], vbs[i].get_printable_value());
    }
    delete[] vbs;
}

TEST(VbxArray, LivesInAVectorThatGrows)
{
    std::vector<Vbx> vbs;

    for (int i = 0; i < 100; ++i) {
        vbs.emplace_back("1.3", SnmpInt32(i));
    }

    EXPECT_STREQ(vbs[0].get_printable_value(), "0");
    EXPECT_STREQ(vbs[99].get_printable_value(), "99");
}

}  // namespace
