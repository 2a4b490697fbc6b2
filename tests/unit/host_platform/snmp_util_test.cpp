#include "platform/snmp_util.h"

#include "host/platform/destination_address.h"
#include "trap/trap_dest_info.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>

namespace {

using talvik::DestinationKind;
using testing::ElementsAre;

struct AddressRow {
    const char* name;
    std::string text;
    DestinationKind kind;

    friend std::ostream& operator<<(std::ostream& os, const AddressRow& row)
    {
        return os << row.name;
    }
};

class DestinationAddress : public testing::TestWithParam<AddressRow> {};

TEST_P(DestinationAddress, IsOfItsKind)
{
    const auto& row = GetParam();

    EXPECT_EQ(talvik::destinationKind(row.text), row.kind) << row.text;
    EXPECT_EQ(SnmpUtil::CheckIPAddrOK(row.text), row.kind != DestinationKind::None) << row.text;
}

std::string repeated(std::size_t count, const std::string& text)
{
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

constexpr auto kNone = DestinationKind::None;
constexpr auto kIpv4 = DestinationKind::Ipv4;
constexpr auto kIpv6 = DestinationKind::Ipv6;
constexpr auto kName = DestinationKind::Name;

const std::string kLabel63(63, 'a');
const std::string kLabel64(64, 'a');
const std::string kName253 = repeated(3, kLabel63 + ".") + std::string(61, 'b');

const AddressRow kAddresses[] = {
    {"Quad", "192.0.2.1", kIpv4},
    {"LowestQuad", "0.0.0.1", kIpv4},
    {"HighestQuad", "255.255.255.255", kIpv4},
    {"Loopback", "127.0.0.1", kIpv4},
    {"UnspecifiedIpv4", "0.0.0.0", kNone},
    {"QuadAbove255", "256.1.1.1", kNone},
    {"LastNumberAbove255", "1.1.1.256", kNone},
    {"ThreeNumbers", "1.2.3", kNone},
    {"FiveNumbers", "1.2.3.4.5", kNone},
    {"OneNumber", "3221225985", kNone},
    {"LeadingZero", "192.0.2.01", kNone},
    {"QuadWithDotAtEnd", "192.0.2.1.", kNone},
    {"QuadWithPort", "192.0.2.1:162", kNone},
    {"QuadWithMask", "192.0.2.1/24", kNone},
    {"BlankBefore", " 192.0.2.1", kNone},
    {"BlankBehind", "192.0.2.1 ", kNone},
    {"LineFeedBehind", "192.0.2.1\n", kNone},
    {"NulInside", std::string("192.0.2.1\0x", 11), kNone},
    {"NulBehind", std::string("192.0.2.1\0", 10), kNone},

    {"Ipv6", "2001:db8::1", kIpv6},
    {"Ipv6Full", "2001:DB8:0:0:8:800:200C:417A", kIpv6},
    {"Ipv6Loopback", "::1", kIpv6},
    {"Ipv4InIpv6", "::ffff:192.0.2.1", kIpv6},
    {"UnspecifiedIpv6", "::", kNone},
    {"UnspecifiedIpv6InFull", "0:0:0:0:0:0:0:0", kNone},
    {"UnspecifiedIpv4InIpv6", "::ffff:0.0.0.0", kNone},
    {"TwoGaps", "2001::db8::1", kNone},
    {"NineGroups", "1:2:3:4:5:6:7:8:9", kNone},
    {"FiveDigits", "2001:db8::12345", kNone},
    {"Brackets", "[2001:db8::1]", kNone},
    {"Prefix", "2001:db8::1/64", kNone},
    {"LinkLocal", "fe80::1", kIpv6},
    {"LinkLocalZone", "fe80::1%eth0", kIpv6},
    {"LinkLocalNumberedZone", "fe80::1%2", kIpv6},
    {"EndOfLinkLocal", "febf:ffff::1%eth0", kIpv6},
    {"BehindLinkLocal", "fec0::1%eth0", kNone},
    {"GlobalZone", "2001:db8::1%eth0", kNone},
    {"UnspecifiedZone", "::%eth0", kNone},
    {"EmptyZone", "fe80::1%", kNone},
    {"ZoneOf15", "fe80::1%" + std::string(15, 'z'), kIpv6},
    {"ZoneOf16", "fe80::1%" + std::string(16, 'z'), kNone},
    {"ZoneWithSlash", "fe80::1%a/b", kNone},
    {"ZoneWithBlank", "fe80::1%a b", kNone},
    {"ZoneWithDelete", "fe80::1%a\x7f", kNone},
    {"ZoneWithTilde", "fe80::1%a~!", kIpv6},
    {"ZoneOutsideAscii", "fe80::1%\xc3\xa4", kNone},
    {"Ipv4Zone", "169.254.0.1%eth0", kNone},

    {"Name", "traps.example.com", kName},
    {"OneLabel", "manager", kName},
    {"OneLetter", "m", kName},
    {"UpperCase", "Traps.EXAMPLE", kName},
    {"DigitsFirst", "3com.example", kName},
    {"DigitLabelInside", "1.2.3.example", kName},
    {"LastLabelBeginsWithDigits", "example.4u", kName},
    {"LastLabelAllDigits", "example.42", kNone},
    {"DotAtEnd", "traps.example.com.", kName},
    {"TwoDotsAtEnd", "traps.example.com..", kNone},
    {"DotAtStart", ".example", kNone},
    {"OnlyDot", ".", kNone},
    {"EmptyLabel", "traps..example", kNone},
    {"HyphenInside", "a-b--c.example", kName},
    {"HyphenAtStart", "-a.example", kNone},
    {"HyphenAtEnd", "a-.example", kNone},
    {"OnlyHyphens", "--", kNone},
    {"Underscore", "a_b.example", kNone},
    {"OutsideAscii",
     "b\xc3\xbc"
     "cher.example",
     kNone},
    {"LabelOf63", kLabel63 + ".example", kName},
    {"LabelOf64", kLabel64 + ".example", kNone},
    {"LastLabelOf63", "a." + kLabel63, kName},
    {"LastLabelOf64", "a." + kLabel64, kNone},
    {"NameOf253", kName253, kName},
    {"NameOf253AndDot", kName253 + ".", kName},
    {"NameOf254", kName253 + "b", kNone},
    {"NameWithBlank", "a b", kNone},
    {"NameWithPort", "traps.example.com:162", kNone},
    {"Url", "udp://traps.example.com", kNone},
    {"Empty", "", kNone},
    {"Blank", " ", kNone},
};

INSTANTIATE_TEST_SUITE_P(Table, DestinationAddress, testing::ValuesIn(kAddresses),
                         [](const auto& row) { return row.param.name; });

using Check = bool (*)(tTrapDestInfo&);

struct FieldRow {
    const char* name;
    Check check;
    tTrapDestInfo destination;
    bool accepted;

    friend std::ostream& operator<<(std::ostream& os, const FieldRow& row)
    {
        return os << row.name;
    }
};

class TrapFieldCheck : public testing::TestWithParam<FieldRow> {};

TEST_P(TrapFieldCheck, LooksAtItsFieldAlone)
{
    auto destination = GetParam().destination;

    EXPECT_EQ(GetParam().check(destination), GetParam().accepted);
}

/// Every other field is one that no check accepts.
tTrapDestInfo unacceptable()
{
    tTrapDestInfo destination;
    destination.version = 0;
    destination.type = 0;
    destination.user = "";
    return destination;
}

FieldRow index(const char* name, const std::string& value, bool accepted)
{
    auto destination = unacceptable();
    destination.index = value;
    return {name, &SnmpUtil::CheckTrapIndOK, destination, accepted};
}

FieldRow port(const char* name, unsigned value, bool accepted)
{
    auto destination = unacceptable();
    destination.port = value;
    return {name, &SnmpUtil::CheckTrapPortOK, destination, accepted};
}

FieldRow version(const char* name, unsigned value, bool accepted)
{
    auto destination = unacceptable();
    destination.version = value;
    return {name, &SnmpUtil::CheckTrapVerOK, destination, accepted};
}

FieldRow type(const char* name, unsigned value, bool accepted)
{
    auto destination = unacceptable();
    destination.type = value;
    return {name, &SnmpUtil::CheckTrapTypeOK, destination, accepted};
}

FieldRow user(const char* name, const std::string& value, bool accepted)
{
    auto destination = unacceptable();
    destination.user = value;
    return {name, &SnmpUtil::CheckTrapUserOK, destination, accepted};
}

const FieldRow kFields[] = {
    index("IndexOne", "1", true),
    index("IndexHighest", "2147483647", true),
    index("IndexAboveHighest", "2147483648", false),
    index("IndexBeyond32Bits", "4294967297", false),
    index("IndexOfManyDigits", "99999999999999999999999", false),
    index("IndexZero", "0", false),
    index("IndexEmpty", "", false),
    index("IndexWithLeadingZero", "01", false),
    index("IndexWithPlus", "+1", false),
    index("IndexWithMinus", "-1", false),
    index("IndexWithBlankBefore", " 1", false),
    index("IndexWithBlankBehind", "1 ", false),
    index("IndexInHex", "0x1", false),
    index("IndexWithLetter", "1a", false),
    index("IndexWithNul", std::string("1\0", 2), false),

    port("PortZero", 0, false),
    port("PortLowest", 1, true),
    port("PortOfTraps", 162, true),
    port("PortHighest", 65535, true),
    port("PortAboveHighest", 65536, false),
    port("PortOf32Bits", 4294967295U, false),

    version("VersionZero", 0, false),
    version("VersionOne", 1, true),
    version("VersionTwo", 2, true),
    version("VersionThree", 3, true),
    version("VersionFour", 4, false),
    version("VersionOf32Bits", 4294967295U, false),

    type("TypeZero", 0, false),
    type("TypeOne", 1, true),
    type("TypeTwo", 2, true),
    type("TypeThree", 3, true),
    type("TypeFour", 4, false),
    type("TypeSix", 6, false),
    type("TypeSeven", 7, true),
    type("TypeEight", 8, false),
    type("TypeOf32Bits", 4294967295U, false),

    user("UserNone", "--", true),
    user("UserOneOctet", "u", true),
    user("UserWithBlank", "a b", true),
    user("UserEmpty", "", false),
    user("UserOf32Octets", std::string(32, 'u'), true),
    user("UserOf33Octets", std::string(33, 'u'), false),
    user("UserOf32OctetsInTwos", repeated(16, "\xc3\xa4"), true),
    user("UserOf34OctetsInTwos", repeated(17, "\xc3\xa4"), false),
    user("UserOfThreeOctetCharacter", "\xe2\x82\xac", true),
    user("UserOfFourOctetCharacter", "\xf0\x9f\x94\x94", true),
    user("UserOfHighestCharacter", "\xf4\x8f\xbf\xbf", true),
    user("UserBeyondHighestCharacter", "\xf4\x90\x80\x80", false),
    user("UserWithNul", std::string("a\0b", 3), false),
    user("UserWithTab", "a\tb", false),
    user("UserWithUnitSeparator", "a\x1f", false),
    user("UserWithDelete", "a\x7f", false),
    user("UserWithFirstUpperControl", "a\xc2\x80", false),
    user("UserWithLastUpperControl", "a\xc2\x9f", false),
    user("UserWithNoBreakSpace", "a\xc2\xa0", true),
    user("UserInLatin1", "J\xfcrgen", false),
    user("UserWithLoneContinuation", "a\x80", false),
    user("UserCutInACharacter", "a\xe2\x82", false),
    user("UserCutBehindTheFirstOctet", "a\xc3", false),
    user("UserWithAsciiInACharacter",
         "\xe2"
         "a\xac",
         false),
    user("UserWithOverlongSlash", "\xc0\xaf", false),
    user("UserWithOverlongThree", "\xe0\x9f\xbf", false),
    user("UserWithOverlongFour", "\xf0\x8f\xbf\xbf", false),
    user("UserBeforeSurrogates", "\xed\x9f\xbf", true),
    user("UserWithFirstSurrogate", "\xed\xa0\x80", false),
    user("UserWithLastSurrogate", "\xed\xbf\xbf", false),
    user("UserBehindSurrogates", "\xee\x80\x80", true),
    user("UserOfFiveOctetCharacter", "\xf8\x88\x80\x80\x80", false),
};

INSTANTIATE_TEST_SUITE_P(Table, TrapFieldCheck, testing::ValuesIn(kFields),
                         [](const auto& row) { return row.param.name; });

TEST(DomainConnectivity, NumericAddressesNeedNoLookup)
{
    EXPECT_TRUE(SnmpUtil::TestDomainConnectivity("192.0.2.1"));
    EXPECT_TRUE(SnmpUtil::TestDomainConnectivity("2001:db8::1"));
}

TEST(DomainConnectivity, NothingDoesNotResolve)
{
    EXPECT_FALSE(SnmpUtil::TestDomainConnectivity(nullptr));
    EXPECT_FALSE(SnmpUtil::TestDomainConnectivity(""));
}

std::vector<std::string> split(const std::string& text, char separator = ',')
{
    std::vector<std::string> fields;
    SnmpUtil::SplitToStr(text, separator, fields);
    return fields;
}

TEST(SplitToStr, KeepsEveryFieldInItsPlace)
{
    EXPECT_THAT(split("a,b,c"), ElementsAre("a", "b", "c"));
    EXPECT_THAT(split("a,,c"), ElementsAre("a", "", "c"));
    EXPECT_THAT(split(",a"), ElementsAre("", "a"));
    EXPECT_THAT(split("a,"), ElementsAre("a", ""));
    EXPECT_THAT(split(",,"), ElementsAre("", "", ""));
}

TEST(SplitToStr, TextWithoutSeparatorIsOneField)
{
    EXPECT_THAT(split("abc"), ElementsAre("abc"));
    EXPECT_THAT(split(""), ElementsAre(""));
    EXPECT_THAT(split("a, b ", ';'), ElementsAre("a, b "));
}

TEST(SplitToStr, TakesAnyOctetForASeparator)
{
    EXPECT_THAT(split(std::string("a\0b", 3), '\0'), ElementsAre("a", "b"));
    EXPECT_THAT(split("a\xff"
                      "b",
                      '\xff'),
                ElementsAre("a", "b"));
}

TEST(SplitToStr, AppendsToWhatIsThere)
{
    std::vector<std::string> fields{"before"};

    SnmpUtil::SplitToStr("a;b", ';', fields);

    EXPECT_THAT(fields, ElementsAre("before", "a", "b"));
}

}  // namespace
