#include "snmp_pp/vb.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

namespace {

using Snmp_pp::Counter64;
using Snmp_pp::Gauge32;
using Snmp_pp::OctetStr;
using Snmp_pp::Oid;
using Snmp_pp::SnmpInt32;
using Snmp_pp::SnmpSyntax;
using Snmp_pp::SnmpUInt32;
using Snmp_pp::Vb;

constexpr int kSuccess = 0;
constexpr int kInvalid = -10;

TEST(Vb, HoldsNothingWhenDefaultMade)
{
    const Vb vb;
    std::int32_t number = 7;

    EXPECT_FALSE(vb.valid());
    EXPECT_EQ(vb.get_syntax(), 5u);
    EXPECT_STREQ(vb.get_printable_value(), "");
    EXPECT_STREQ(vb.get_printable_oid(), "");
    EXPECT_EQ(vb.get_value(number), kInvalid);
    EXPECT_EQ(number, 7);
}

TEST(Vb, IsValidOnceItHasAValidOid)
{
    Vb vb;
    vb.set_value(5);
    EXPECT_FALSE(vb.valid());

    vb.set_oid("1.3");
    EXPECT_TRUE(vb.valid());
    EXPECT_STREQ(vb.get_printable_oid(), "1.3");
    EXPECT_TRUE(Vb(Oid("1.3")).valid());

    vb.set_oid("None");
    EXPECT_FALSE(vb.valid());
}

TEST(Vb, GivesItsOidBothWays)
{
    const Vb vb(Oid("1.3.6"));
    Oid oid;

    vb.get_oid(oid);

    EXPECT_EQ(oid, Oid("1.3.6"));
    EXPECT_EQ(&vb.get_oid(), &vb.get_oid());
    EXPECT_EQ(vb.get_oid(), oid);
}

TEST(Vb, ClonesTheValueItIsGiven)
{
    OctetStr octets("text");
    Vb vb;

    vb.set_value(octets);
    octets = "changed";

    EXPECT_EQ(vb.get_syntax(), 4u);
    EXPECT_STREQ(vb.get_printable_value(), "text");
}

TEST(Vb, TakesTheBytesOfATemporaryAndNoneOfAnother)
{
    OctetStr kept("kept, and longer than any small buffer");
    Vb vb;

    vb.set_value(kept);
    EXPECT_STREQ(vb.get_printable_value(), "kept, and longer than any small buffer");
    EXPECT_EQ(kept, "kept, and longer than any small buffer");

    vb.set_exception_status(sNMP_SYNTAX_NOSUCHOBJECT);
    vb.set_value(OctetStr("\x01"));
    EXPECT_EQ(vb.get_syntax(), 4u);
    EXPECT_EQ(std::string(vb.get_printable_value()).substr(0, 5), "  01 ");
}

TEST(Vb, TakesPlainNumbersAndTexts)
{
    const unsigned char bytes[] = {'a', 0, 'b'};
    Vb vb;
    std::string text;

    vb.set_value(-5);
    EXPECT_EQ(vb.get_syntax(), 2u);
    EXPECT_STREQ(vb.get_printable_value(), "-5");
    vb.set_value(4294967295u);
    EXPECT_EQ(vb.get_syntax(), 66u);
    EXPECT_STREQ(vb.get_printable_value(), "4294967295");
    vb.set_value("text");
    EXPECT_EQ(vb.get_syntax(), 4u);
    EXPECT_STREQ(vb.get_printable_value(), "text");
    vb.set_value(vb.get_printable_value());
    EXPECT_STREQ(vb.get_printable_value(), "text");
    vb.set_value(bytes, 3);
    EXPECT_EQ(vb.get_value(text), kSuccess);
    EXPECT_EQ(text, std::string("a\0b", 3));
    vb.set_value(static_cast<const char*>(nullptr));
    EXPECT_EQ(vb.get_syntax(), 4u);
    EXPECT_STREQ(vb.get_printable_value(), "");
}

TEST(Vb, TakesTheLow32BitsOfALong)
{
    Vb vb;

    vb.set_value(-5L);
    EXPECT_EQ(vb.get_syntax(), 2u);
    EXPECT_STREQ(vb.get_printable_value(), "-5");
    vb.set_value(0x100000007ul);
    EXPECT_EQ(vb.get_syntax(), 66u);
    EXPECT_STREQ(vb.get_printable_value(), "7");
}

TEST(Vb, ReleasesTheValueWhenSetToNull)
{
    Vb vb(Oid("1.3"));
    vb.set_value(5);

    vb.set_null();

    EXPECT_EQ(vb.get_syntax(), 5u);
    EXPECT_STREQ(vb.get_printable_value(), "");
    EXPECT_TRUE(vb.valid());
}

TEST(Vb, LosesOidAndValueWhenCleared)
{
    Vb vb(Oid("1.3"));
    vb.set_value(5);

    vb.clear();

    EXPECT_FALSE(vb.valid());
    EXPECT_EQ(vb.get_syntax(), 5u);
    EXPECT_STREQ(vb.get_printable_oid(), "");
}

/// What each kind of argument got out of a binding; the numbers start as 9 and the text as "-".
struct Fetched {
    int signedResult, unsignedResult, longResult, longLongResult, textResult;
    std::int32_t signedNumber = 9;
    std::uint32_t unsignedNumber = 9;
    unsigned long longNumber = 9;
    unsigned long long longLongNumber = 9;
    std::string text = "-";

    explicit Fetched(const SnmpSyntax& value)
    {
        Vb vb;
        vb.set_value(value);
        signedResult = vb.get_value(signedNumber);
        unsignedResult = vb.get_value(unsignedNumber);
        longResult = vb.get_value(longNumber);
        longLongResult = vb.get_value(longLongNumber);
        textResult = vb.get_value(text);
    }
};

TEST(VbValue, OfIntegerFitsASignedNumberOnly)
{
    const Fetched got(SnmpInt32(-5));

    EXPECT_EQ(got.signedResult, kSuccess);
    EXPECT_EQ(got.signedNumber, -5);
    EXPECT_EQ(got.unsignedResult, kInvalid);
    EXPECT_EQ(got.unsignedNumber, 9u);
    EXPECT_EQ(got.longResult, kInvalid);
    EXPECT_EQ(got.longLongResult, kInvalid);
    EXPECT_EQ(got.textResult, kInvalid);
}

TEST(VbValue, OfGaugeAndUnsignedFitAnUnsignedNumberOnly)
{
    const Fetched gauge(Gauge32(4294967295u));

    EXPECT_EQ(gauge.unsignedResult, kSuccess);
    EXPECT_EQ(gauge.unsignedNumber, 4294967295u);
    EXPECT_EQ(gauge.signedResult, kInvalid);
    EXPECT_EQ(gauge.signedNumber, 9);
    EXPECT_EQ(gauge.longResult, kInvalid);
    EXPECT_EQ(gauge.textResult, kInvalid);
    EXPECT_EQ(Fetched(SnmpUInt32(3)).unsignedNumber, 3u);
}

TEST(VbValue, OfCounterFitsA64BitNumberOnly)
{
    const Fetched got(Counter64(0xD, 0x00C900B6));

    EXPECT_EQ(got.longResult, kSuccess);
    EXPECT_EQ(got.longNumber, 0xD00C900B6u);
    EXPECT_EQ(got.longLongResult, kSuccess);
    EXPECT_EQ(got.longLongNumber, 0xD00C900B6u);
    EXPECT_EQ(got.signedResult, kInvalid);
    EXPECT_EQ(got.unsignedResult, kInvalid);
    EXPECT_EQ(got.textResult, kInvalid);
}

TEST(VbValue, OfOctetsFitsATextOnly)
{
    const Fetched got(OctetStr("12"));

    EXPECT_EQ(got.textResult, kSuccess);
    EXPECT_EQ(got.text, "12");
    EXPECT_EQ(got.signedResult, kInvalid);
    EXPECT_EQ(got.unsignedResult, kInvalid);
    EXPECT_EQ(got.longLongNumber, 9u);
}

TEST(VbValue, OfOidFitsNoPlainArgument)
{
    const Fetched got(Oid("1.3"));

    EXPECT_EQ(got.signedResult, kInvalid);
    EXPECT_EQ(got.longResult, kInvalid);
    EXPECT_EQ(got.textResult, kInvalid);
    EXPECT_EQ(got.text, "-");
}

TEST(VbValue, ThatIsInvalidFitsNothing)
{
    SnmpInt32 broken;
    broken = static_cast<const SnmpSyntax&>(Oid("1.3"));

    EXPECT_EQ(Fetched(broken).signedResult, kInvalid);
}

TEST(VbValue, IsConvertedIntoASyntaxThatFits)
{
    Vb vb;
    Oid oid;
    Gauge32 gauge(1);
    OctetStr octets("kept");

    EXPECT_EQ(vb.get_value(octets), kInvalid);
    EXPECT_EQ(octets, "kept");

    vb.set_value(Oid("1.3.6"));
    EXPECT_EQ(vb.get_value(oid), kSuccess);
    EXPECT_EQ(oid, "1.3.6");
    EXPECT_EQ(vb.get_value(octets), kInvalid);
    EXPECT_FALSE(octets.valid());

    vb.set_value(SnmpInt32(5));
    EXPECT_EQ(vb.get_value(gauge), kSuccess);
    EXPECT_EQ(gauge, 5u);
}

TEST(VbException, TakesThePlaceOfTheValue)
{
    for (const unsigned int status : {128u, 129u, 130u}) {
        Vb vb(Oid("1.3"));
        vb.set_value(5);

        vb.set_exception_status(status);

        EXPECT_EQ(vb.get_syntax(), status);
        EXPECT_EQ(vb.get_exception_status(), status);
        EXPECT_STREQ(vb.get_printable_value(), "");
        EXPECT_EQ(Vb(vb).get_syntax(), status);
        EXPECT_TRUE(vb.valid());
    }
}

TEST(VbException, EndsWhenAValueOrNullIsSet)
{
    Vb vb;
    vb.set_exception_status(sNMP_SYNTAX_NOSUCHINSTANCE);

    vb.set_value(5);
    EXPECT_EQ(vb.get_exception_status(), 0u);
    EXPECT_EQ(vb.get_syntax(), 2u);

    vb.set_exception_status(sNMP_SYNTAX_ENDOFMIBVIEW);
    vb.set_null();
    EXPECT_EQ(vb.get_syntax(), 5u);

    vb.set_exception_status(sNMP_SYNTAX_NOSUCHOBJECT);
    vb = Vb();
    EXPECT_EQ(vb.get_syntax(), 5u);
}

TEST(VbCopy, IsDeep)
{
    Vb original(Oid("1.3"));
    original.set_value("text");
    const Vb copy(original);
    Vb assigned;
    assigned = original;
    const std::unique_ptr<Vb> clone(original.clone());

    original.set_value(5);
    original.set_oid("1.4");

    for (const Vb* vb :
         {&copy, static_cast<const Vb*>(&assigned), static_cast<const Vb*>(clone.get())}) {
        EXPECT_STREQ(vb->get_printable_oid(), "1.3");
        EXPECT_STREQ(vb->get_printable_value(), "text");
    }
    EXPECT_NE(copy.get_printable_value(), assigned.get_printable_value());
}

TEST(VbCopy, ReplacesAValueAndAnEmptyOneClearsIt)
{
    Vb vb(Oid("1.3"));
    vb.set_value("text");

    vb = Vb(Oid("1.4"));

    EXPECT_STREQ(vb.get_printable_oid(), "1.4");
    EXPECT_EQ(vb.get_syntax(), 5u);
}

TEST(VbCopy, ToItselfKeepsTheValueInPlace)
{
    Vb vb(Oid("1.3"));
    vb.set_value("text");
    const char* printable = vb.get_printable_value();
    const Vb& same = vb;

    vb = same;

    EXPECT_EQ(vb.get_printable_value(), printable);
    EXPECT_STREQ(printable, "text");
}

}  // namespace
