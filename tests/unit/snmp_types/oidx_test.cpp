#include "agent_pp/snmp_pp_ext.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using Agentpp::Oidx;
using Snmp_pp::OctetStr;
using Snmp_pp::Oid;
using Snmp_pp::SmiUINT32;

Oidx repeated(SmiUINT32 id, int count)
{
    Oidx oid;
    for (int i = 0; i < count; ++i) {
        oid += id;
    }
    return oid;
}

TEST(Oidx, IsInvalidAndEmptyWhenDefaultMade)
{
    const Oidx oid;

    EXPECT_FALSE(oid.valid());
    EXPECT_EQ(oid.len(), 0u);
    EXPECT_EQ(oid.get_syntax(), 6u);
    EXPECT_STREQ(oid.get_printable(), "");
    EXPECT_EQ(oid.last(), 0u);
}

TEST(Oidx, IsMadeFromAnOidImplicitly)
{
    const Oid oid("1.3.6");
    const SmiUINT32 ids[] = {1, 3};

    const Oidx made = oid;

    EXPECT_EQ(made, oid);
    EXPECT_STREQ(Oidx(ids, 2).get_printable(), "1.3");
}

TEST(Oidx, IsAssignedFromTextOidAndNumber)
{
    Oidx oid;

    oid = "1.3.6.1.4.1.99999.2.251.20.1.2.2.5.3.2";
    EXPECT_STREQ(oid.get_printable(), "1.3.6.1.4.1.99999.2.251.20.1.2.2.5.3.2");
    oid = Oid("1.3");
    EXPECT_STREQ(oid.get_printable(), "1.3");
    oid = 7u;
    EXPECT_STREQ(oid.get_printable(), "7");
    oid = Oidx("1.4");
    EXPECT_STREQ(oid.get_printable(), "1.4");
    oid = "1.3.None.2";
    EXPECT_FALSE(oid.valid());
}

TEST(Oidx, CutsWithoutChangingItself)
{
    const Oidx oid("1.3.6.1");

    EXPECT_STREQ(oid.cut_left(1).get_printable(), "3.6.1");
    EXPECT_STREQ(oid.cut_right(1).get_printable(), "1.3.6");
    EXPECT_STREQ(Oidx::cut_left(oid, 3).get_printable(), "1");
    EXPECT_STREQ(Oidx::cut_right(oid, 3).get_printable(), "1");
    EXPECT_EQ(oid.cut_left(0), oid);
    EXPECT_EQ(oid.cut_right(0), oid);
    EXPECT_STREQ(oid.get_printable(), "1.3.6.1");
}

TEST(Oidx, CuttingMoreThanThereIsGivesAnEmptyOne)
{
    const Oidx oid("1.3");

    for (const unsigned int count : {2u, 3u, 4294967295u}) {
        EXPECT_FALSE(oid.cut_left(count).valid()) << count;
        EXPECT_FALSE(oid.cut_right(count).valid()) << count;
    }
    EXPECT_FALSE(Oidx().cut_left(1).valid());
    EXPECT_FALSE(Oidx().cut_right(1).valid());
}

TEST(Oidx, KnowsItsLastSubIdentifier)
{
    EXPECT_EQ(Oidx("1.3.6").last(), 6u);
}

TEST(Oidx, IsInASubtreeStrictlyBelowItsRoot)
{
    const Oidx root("1.3");

    EXPECT_TRUE(Oidx("1.3.6").in_subtree_of(root));
    EXPECT_TRUE(root.is_root_of("1.3.6"));
    EXPECT_TRUE(Oidx().is_root_of(root));
    EXPECT_FALSE(root.in_subtree_of(root));
    EXPECT_FALSE(root.is_root_of(root));
    EXPECT_FALSE(Oidx("1.4.6").in_subtree_of(root));
    EXPECT_FALSE(Oidx("1").in_subtree_of(root));
    EXPECT_FALSE(root.is_root_of("1"));
}

TEST(Oidx, CarriesBytesWithTheirNumberInFront)
{
    const unsigned char bytes[] = {'a', 0, 0xFF};
    const OctetStr octets(bytes, 3);

    const Oidx oid = Oidx::from_string(octets);

    EXPECT_STREQ(oid.get_printable(), "3.97.0.255");
    EXPECT_EQ(oid.as_string(true), octets);
    EXPECT_EQ(oid.as_string().len(), 4u);
}

TEST(Oidx, CarriesBytesAlone)
{
    const Oidx oid = Oidx::from_string("ab", false);

    EXPECT_STREQ(oid.get_printable(), "97.98");
    EXPECT_EQ(oid.as_string(), "ab");
    EXPECT_EQ(oid.as_string(true), "ab");
    EXPECT_STREQ(Oidx::from_string("").get_printable(), "0");
    EXPECT_FALSE(Oidx::from_string("", false).valid());
}

TEST(Oidx, IsFollowedByItsFirstChild)
{
    EXPECT_STREQ(Oidx("1.3").successor().get_printable(), "1.3.0");
    EXPECT_STREQ(Oidx().successor().get_printable(), "0");
}

TEST(Oidx, IsFollowedByTheNextPeerWhenItCanHaveNoChild)
{
    const Oidx longest = repeated(1, 128);
    const Oidx full = repeated(4294967295u, 128);
    Oidx carried = repeated(1, 3);
    carried += repeated(4294967295u, 125);

    EXPECT_EQ(longest.successor(), longest.next_peer());
    EXPECT_STREQ(carried.successor().get_printable(), "1.1.2");
    EXPECT_EQ(full.successor(), full);
}

TEST(Oidx, FollowsItsParentOrTheDeepestBelowThePreviousPeer)
{
    const Oidx previous = Oidx("1.3").predecessor();

    EXPECT_STREQ(Oidx("1.3.0").predecessor().get_printable(), "1.3");
    EXPECT_EQ(previous.len(), 128u);
    EXPECT_EQ(previous.cut_right(126), Oidx("1.2"));
    EXPECT_EQ(previous.last(), 4294967295u);
    EXPECT_EQ(previous.successor(), Oidx("1.3"));
    EXPECT_FALSE(Oidx().predecessor().valid());
}

TEST(Oidx, HasANextPeer)
{
    EXPECT_STREQ(Oidx("1.3").next_peer().get_printable(), "1.4");
    EXPECT_STREQ(Oidx("1.4294967295").next_peer().get_printable(), "1.0");
    EXPECT_FALSE(Oidx().next_peer().valid());
}

TEST(Oidx, StaysAnOidxWhenCloned)
{
    const Oidx oid("1.3");

    const std::unique_ptr<Snmp_pp::SnmpSyntax> clone(oid.clone());

    ASSERT_NE(dynamic_cast<Oidx*>(clone.get()), nullptr);
    EXPECT_STREQ(clone->get_printable(), "1.3");
}

}  // namespace
