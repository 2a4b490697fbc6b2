#include "snmp_pp/octet.h"

#include "snmp_pp/oid.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace {

using Snmp_pp::OctetStr;
using Snmp_pp::SnmpSyntax;

constexpr unsigned char kBytes[] = {'a', 0, 0xFF, 'b'};

TEST(OctetStr, IsValidAndEmptyWhenDefaultMade)
{
    const OctetStr octets;

    EXPECT_TRUE(octets.valid());
    EXPECT_EQ(octets.len(), 0u);
    EXPECT_EQ(octets.data(), nullptr);
    EXPECT_EQ(octets.get_syntax(), 4u);
    EXPECT_EQ(octets.as_string(), "");
}

TEST(OctetStr, IsEmptyAndValidWhenMadeFromNothing)
{
    const char* noText = nullptr;

    EXPECT_EQ(OctetStr(noText).len(), 0u);
    EXPECT_TRUE(OctetStr(noText).valid());
    EXPECT_EQ(OctetStr(nullptr, 4).len(), 0u);
    EXPECT_EQ(OctetStr(kBytes, 0).data(), nullptr);
}

TEST(OctetStr, KeepsEmbeddedNuls)
{
    const OctetStr octets(kBytes, 4);

    EXPECT_EQ(octets.len(), 4u);
    EXPECT_EQ(octets.as_string(), std::string("a\0\xFF"
                                              "b",
                                              4));
    EXPECT_EQ(octets[2], 0xFF);
    EXPECT_EQ(octets[4], 0);
    EXPECT_EQ(octets.data()[3], 'b');
}

TEST(OctetStr, AppendsTextByteAndAnother)
{
    OctetStr octets("ab");

    octets += "cd";
    octets += static_cast<unsigned char>('e');
    octets += OctetStr("f");
    octets += static_cast<const char*>(nullptr);
    EXPECT_EQ(octets, "abcdef");

    octets += octets;
    octets += octets.get_printable();
    EXPECT_EQ(octets, "abcdefabcdefabcdefabcdef");

    octets += static_cast<unsigned char>(0);
    octets += "x";
    EXPECT_EQ(octets.len(), 26u);
}

TEST(OctetStr, IsAssignedFromTextDataAndAnother)
{
    OctetStr octets(kBytes, 4);

    octets = "text";
    EXPECT_EQ(octets, "text");
    octets.set_data(kBytes, 4);
    EXPECT_EQ(octets, OctetStr(kBytes, 4));
    octets.set_data(octets.data() + 2, 2);
    EXPECT_EQ(octets, OctetStr(kBytes + 2, 2));
    octets = OctetStr("other");
    EXPECT_EQ(octets, "other");
    octets = static_cast<const char*>(nullptr);
    EXPECT_EQ(octets.len(), 0u);
    EXPECT_TRUE(octets.valid());
}

TEST(OctetStr, IsEmptyAndValidWhenCleared)
{
    OctetStr octets("text");

    octets.clear();

    EXPECT_TRUE(octets.valid());
    EXPECT_EQ(octets.data(), nullptr);
    EXPECT_STREQ(octets.get_printable(), "");
}

TEST(OctetStr, TakesWritesToAByte)
{
    OctetStr octets("abc");
    ASSERT_STREQ(octets.get_printable(), "abc");

    octets[1] = 'X';
    EXPECT_STREQ(octets.get_printable(), "aXc");

    octets[3] = 'Y';  // past the end
    EXPECT_STREQ(octets.get_printable(), "aXc");
    EXPECT_EQ(octets[3], 0);
}

TEST(OctetStr, KeepsItsValueWhenAssignedToItself)
{
    OctetStr octets("abc");
    const OctetStr& same = octets;

    octets = same;
    octets = static_cast<const SnmpSyntax&>(same);
    octets = octets.get_printable();

    EXPECT_EQ(octets, "abc");
}

TEST(OctetStr, CopiesAreIndependent)
{
    OctetStr original("abc");
    const OctetStr copy(original);
    const std::unique_ptr<SnmpSyntax> clone(original.clone());

    original[0] = 'X';

    EXPECT_EQ(copy, "abc");
    EXPECT_STREQ(clone->get_printable(), "abc");
    EXPECT_EQ(original, "Xbc");
}

TEST(OctetStr, LeavesAnEmptyOneWhereItIsMovedFrom)
{
    for (const std::string& bytes : {std::string("short"), std::string(100, '\x01')}) {
        OctetStr source(reinterpret_cast<const unsigned char*>(bytes.data()),
                        static_cast<std::uint32_t>(bytes.size()));
        const std::string printed = source.get_printable();
        OctetStr target("\x02");
        ASSERT_STRNE(target.get_printable(), printed.c_str());

        // NOLINTBEGIN(bugprone-use-after-move): what is left behind is part of the contract
        target = std::move(source);
        EXPECT_EQ(target.as_string(), bytes);
        EXPECT_EQ(target.get_printable(), printed);
        EXPECT_EQ(source.len(), 0u);
        EXPECT_STREQ(source.get_printable(), "");

        const OctetStr made(std::move(target));
        EXPECT_EQ(made.get_printable(), printed);
        EXPECT_EQ(target.len(), 0u);
        EXPECT_STREQ(target.get_printable(), "");
        // NOLINTEND(bugprone-use-after-move)
    }
}

TEST(OctetStr, StaysInvalidWhenMoved)
{
    OctetStr source;
    source = static_cast<const SnmpSyntax&>(Snmp_pp::Oid("1.3"));
    ASSERT_FALSE(source.valid());

    const OctetStr made(std::move(source));

    EXPECT_FALSE(made.valid());
    EXPECT_TRUE(source.valid());  // NOLINT(bugprone-use-after-move): empty, as a new one
}

TEST(OctetStr, ComparesUnsignedBytesAndThenLengths)
{
    const OctetStr low("ab");
    const OctetStr longer("abc");
    const OctetStr high(kBytes + 2, 1);

    EXPECT_TRUE(low < longer);
    EXPECT_TRUE(longer < high);
    EXPECT_TRUE(high > low);
    EXPECT_TRUE(low <= low);
    EXPECT_TRUE(low >= low);
    EXPECT_TRUE(low != longer);
    EXPECT_TRUE(OctetStr(kBytes, 4) != OctetStr(kBytes, 1));
}

TEST(OctetStr, ComparesWithText)
{
    const OctetStr octets("b");

    EXPECT_TRUE(octets == "b");
    EXPECT_TRUE(octets != "a");
    EXPECT_TRUE(octets > "a");
    EXPECT_TRUE(octets >= "b");
    EXPECT_TRUE(octets < "ba");
    EXPECT_TRUE(octets <= "c");
    EXPECT_TRUE("b" == octets);
    EXPECT_TRUE(OctetStr(kBytes, 2) != "a");
}

}  // namespace
