#include "agent_pp/snmp_pp_ext.h"
#include "snmp_pp/snmp_pp.h"

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <vector>

namespace {

using Agentpp::Oidx;
using Snmp_pp::Counter64;
using Snmp_pp::OctetStr;
using Snmp_pp::Oid;
using Snmp_pp::Vb;

TEST(PrintableText, StaysWhereItIsUntilTheValueChanges)
{
    const OctetStr octets("text");
    const Oid oid("1.3");
    const Counter64 number(5);

    EXPECT_EQ(octets.get_printable(), octets.get_printable());
    EXPECT_EQ(oid.get_printable(), oid.get_printable());
    EXPECT_EQ(number.get_printable(), number.get_printable());
}

TEST(PrintableText, OfABindingSurvivesAChangeOfItsOid)
{
    Vb vb(Oid("1.3"));
    vb.set_value("text");
    const char* printable = vb.get_printable_value();

    vb.set_oid("1.4");

    EXPECT_EQ(vb.get_printable_value(), printable);
    EXPECT_STREQ(printable, "text");
}

TEST(PrintableText, OfACopyIsItsOwn)
{
    const OctetStr original("text");
    const char* printable = original.get_printable();

    const OctetStr copy(original);

    EXPECT_NE(copy.get_printable(), printable);
    EXPECT_STREQ(copy.get_printable(), printable);
}

TEST(PrintableText, FollowsEveryWayToChangeAnOid)
{
    Oidx oid("1.3.6");
    const auto printed = [&oid] { return std::string(oid.get_printable()); };

    EXPECT_EQ(printed(), "1.3.6");
    oid += 1;
    EXPECT_EQ(printed(), "1.3.6.1");
    oid += "4";
    EXPECT_EQ(printed(), "1.3.6.1.4");
    oid += Oid("1");
    EXPECT_EQ(printed(), "1.3.6.1.4.1");
    oid.trim();
    EXPECT_EQ(printed(), "1.3.6.1.4");
    oid = Oid("1.2");
    EXPECT_EQ(printed(), "1.2");
    oid = 7u;
    EXPECT_EQ(printed(), "7");
    oid.clear();
    EXPECT_EQ(printed(), "");
}

TEST(PrintableText, FollowsEveryWayToChangeOctets)
{
    OctetStr octets("a");
    const auto printed = [&octets] { return std::string(octets.get_printable()); };

    EXPECT_EQ(printed(), "a");
    octets += "b";
    EXPECT_EQ(printed(), "ab");
    octets += static_cast<unsigned char>('c');
    EXPECT_EQ(printed(), "abc");
    octets += OctetStr("d");
    EXPECT_EQ(printed(), "abcd");
    octets = "e";
    EXPECT_EQ(printed(), "e");
    octets.set_data(reinterpret_cast<const unsigned char*>("fg"), 2);
    EXPECT_EQ(printed(), "fg");
    octets = OctetStr("h");
    EXPECT_EQ(printed(), "h");
    octets.clear();
    EXPECT_EQ(printed(), "");
}

TEST(PrintableText, IsTheSameForThreadsThatAskAtOnce)
{
    constexpr int kRounds = 200;
    for (int round = 0; round < kRounds; ++round) {
        const Oidx shared("1.3.6.1.4.1.99999.2.91.10.3.1.1");
        std::promise<void> start;
        const std::shared_future<void> started = start.get_future().share();
        std::vector<std::future<const char*>> answers;
        for (int i = 0; i < 4; ++i) {
            answers.push_back(std::async(std::launch::async, [&shared, started] {
                started.wait();
                return shared.get_printable();
            }));
        }

        start.set_value();

        for (auto& answer : answers) {
            EXPECT_EQ(answer.get(), shared.get_printable());
        }
    }
}

}  // namespace
