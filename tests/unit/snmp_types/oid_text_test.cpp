#include "snmp_pp/oid.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

using Snmp_pp::Oid;
using Snmp_pp::SmiUINT32;

std::vector<SmiUINT32> idsOf(const Oid& oid)
{
    std::vector<SmiUINT32> ids;
    for (SmiUINT32 i = 0; i < oid.len(); ++i) {
        ids.push_back(oid[i]);
    }
    return ids;
}

struct Text {
    const char* name;
    const char* text;
    std::vector<SmiUINT32> ids;
    const char* printable;

    friend std::ostream& operator<<(std::ostream& os, const Text& row) { return os << row.name; }
};

class OidText : public testing::TestWithParam<Text> {};

TEST_P(OidText, MakesAnOid)
{
    const Oid oid(GetParam().text);

    EXPECT_EQ(idsOf(oid), GetParam().ids);
    EXPECT_STREQ(oid.get_printable(), GetParam().printable);
    EXPECT_EQ(oid.valid(), !GetParam().ids.empty());
}

TEST_P(OidText, ReplacesAnOid)
{
    Oid oid("9.9.9");

    oid = GetParam().text;

    EXPECT_EQ(idsOf(oid), GetParam().ids);
    EXPECT_STREQ(oid.get_printable(), GetParam().printable);
}

const Text kTexts[] = {
    {"Null", nullptr, {}, ""},
    {"Empty", "", {}, ""},
    {"None", "None", {}, ""},
    {"NoneBetweenNumbers", "1.3.None.2", {}, ""},
    {"NegativeNumber", "1.3.-1", {}, ""},
    {"BlankInFront", " 1.3", {}, ""},
    {"BlankInside", "1.3 .4", {}, ""},
    {"BlankAtTheEnd", "1.3 ", {}, ""},
    {"LineFeedAtTheEnd", "1.3\n", {}, ""},
    {"PlusSign", "1.+3", {}, ""},
    {"HexNumber", "1.0x3", {}, ""},
    {"OnlyDots", "...", {}, ""},
    {"Dotted", "1.3.6.1", {1, 3, 6, 1}, "1.3.6.1"},
    {"DotInFront", ".1.3.6.1", {1, 3, 6, 1}, "1.3.6.1"},
    {"DotAtTheEnd", "1.3.6.1.", {1, 3, 6, 1}, "1.3.6.1"},
    {"EmptyArc", "1..3", {1, 3}, "1.3"},
    {"OneNumber", "7", {7}, "7"},
    {"LeadingZeros", "1.007", {1, 7}, "1.7"},
    {"ZeroArcs", "0.0", {0, 0}, "0.0"},
    {"GreatestNumber", "1.3.4294967295", {1, 3, 4294967295u}, "1.3.4294967295"},
    {"NumberBeyond32Bits", "1.3.4294967296", {1, 3, 0}, "1.3.0"},
    {"NumberTwoBeyond32Bits", "1.3.4294967297", {1, 3, 1}, "1.3.1"},
};

INSTANTIATE_TEST_SUITE_P(Row, OidText, testing::ValuesIn(kTexts),
                         [](const auto& row) { return row.param.name; });

struct Appending {
    const char* name;
    const char* before;
    const char* text;
    const char* after;

    friend std::ostream& operator<<(std::ostream& os, const Appending& row)
    {
        return os << row.name;
    }
};

class OidAppendedText : public testing::TestWithParam<Appending> {};

TEST_P(OidAppendedText, JoinsWithADot)
{
    Oid oid(GetParam().before);

    oid += GetParam().text;

    EXPECT_STREQ(oid.get_printable(), GetParam().after);
}

const Appending kAppendings[] = {
    {"Numbers", "1.3", "6.1", "1.3.6.1"}, {"DotInFront", "1.3", ".6.1", "1.3.6.1"},
    {"ToAnEmptyOne", "", "6.1", "6.1"},   {"EmptyText", "1.3", "", "1.3"},
    {"Null", "1.3", nullptr, "1.3"},      {"NoOidMakesTheWholeInvalid", "1.3", "None", ""},
};

INSTANTIATE_TEST_SUITE_P(Row, OidAppendedText, testing::ValuesIn(kAppendings),
                         [](const auto& row) { return row.param.name; });

TEST(OidText, MayBeTheOidsOwnPrintable)
{
    Oid oid("1.3.6");

    oid = oid.get_printable();
    EXPECT_STREQ(oid.get_printable(), "1.3.6");

    oid += oid.get_printable();
    EXPECT_STREQ(oid.get_printable(), "1.3.6.1.3.6");
}

}  // namespace
