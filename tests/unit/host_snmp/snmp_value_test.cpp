#include "host/snmp/snmp_value.h"

#include "framework/tlv_cell.h"
#include "tests/unit/host_snmp/table_kit.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <ostream>
#include <string>

namespace {

using talvik::MibColumn;
using talvik::SnmpValue;
using talvik::Syntax;
using talvik::test::bytesOf;
using talvik::test::cell;

MibColumn column(Syntax syntax, bool textCell = false)
{
    MibColumn made;
    made.tag = 1;
    made.syntax = syntax;
    made.textCell = textCell;
    return made;
}

std::optional<SnmpValue> convert(CTLVCell::ETLVType type, const std::string& bytes, Syntax syntax,
                                 bool textCell = false)
{
    std::string problem;
    auto value = talvik::toSnmpValue(*cell(type, 1, bytes), column(syntax, textCell), problem);
    EXPECT_EQ(value.has_value(), problem.empty()) << problem;
    return value;
}

struct Number {
    const char* name;
    CTLVCell::ETLVType type;
    std::string bytes;
    Syntax syntax;
    std::optional<std::int64_t> expected;

    friend std::ostream& operator<<(std::ostream& os, const Number& row) { return os << row.name; }
};

class SnmpNumber : public testing::TestWithParam<Number> {};

TEST_P(SnmpNumber, FollowsTheSyntax)
{
    const auto& row = GetParam();

    const auto value = convert(row.type, row.bytes, row.syntax);

    EXPECT_EQ(value ? std::optional(value->number) : std::nullopt, row.expected);
}

const Number kNumbers[] = {
    {"MinusOneInFourBytes", CTLVCell::TLV_INT, bytesOf(std::int32_t{-1}), Syntax::Integer, -1},
    {"MinusTwoInTwoBytes", CTLVCell::TLV_INT, bytesOf(std::int16_t{-2}), Syntax::Integer, -2},
    {"MinusThreeInEightBytes", CTLVCell::TLV_INT, bytesOf(std::int64_t{-3}), Syntax::Integer, -3},
    {"UnsignedBeyondInteger", CTLVCell::TLV_UINT, bytesOf(std::uint32_t{0x80000000U}),
     Syntax::Integer, std::nullopt},
    {"UnsignedAtItsLargest", CTLVCell::TLV_UINT, bytesOf(std::uint32_t{0xFFFFFFFFU}),
     Syntax::Gauge32, 4294967295},
    {"UnsignedTooLarge", CTLVCell::TLV_UINT, bytesOf(std::uint64_t{1} << 32U), Syntax::Unsigned32,
     std::nullopt},
    {"NegativeForUnsigned", CTLVCell::TLV_INT, bytesOf(std::int32_t{-1}), Syntax::Unsigned32,
     std::nullopt},
    {"SixtyFourBits", CTLVCell::TLV_UINT, bytesOf(~std::uint64_t{0}), Syntax::Counter64, -1},
    {"NoBytesAreZero", CTLVCell::TLV_INT, "", Syntax::Integer, 0},
    {"TextForANumber", CTLVCell::TLV_STRING, "12", Syntax::Integer, std::nullopt},
    {"OctetsForANumber", CTLVCell::TLV_OCTETS, "12", Syntax::TimeTicks, std::nullopt},
};

INSTANTIATE_TEST_SUITE_P(Cells, SnmpNumber, testing::ValuesIn(kNumbers),
                         [](const auto& row) { return row.param.name; });

TEST(SnmpText, LosesItsTerminatingNulOnly)
{
    EXPECT_EQ(convert(CTLVCell::TLV_STRING, std::string("ab\0", 3), Syntax::OctetString)->octets,
              "ab");
    EXPECT_EQ(convert(CTLVCell::TLV_STRING, "ab", Syntax::OctetString)->octets, "ab");
    EXPECT_EQ(convert(CTLVCell::TLV_STRING, "", Syntax::OctetString)->octets, "");
    EXPECT_EQ(convert(CTLVCell::TLV_OCTETS, std::string("a\0", 2), Syntax::OctetString)->octets,
              std::string("a\0", 2));
    EXPECT_FALSE(convert(CTLVCell::TLV_INT, "ab", Syntax::OctetString).has_value());
    EXPECT_FALSE(convert(CTLVCell::TLV_NONE, "ab", Syntax::OctetString).has_value());
}

TEST(SnmpNumberAsText, IsStrictlyDecimal)
{
    const auto number = [](const std::string& text) {
        const auto value = convert(CTLVCell::TLV_STRING, text + '\0', Syntax::Integer, true);
        return value ? std::optional(value->number) : std::nullopt;
    };

    EXPECT_EQ(number("1"), 1);
    EXPECT_EQ(number("-7"), -7);
    EXPECT_EQ(number("2147483647"), 2147483647);
    for (const char* text : {"", " 1", "1 ", "+1", "01", "-0", "0x1", "1.0", "2147483648",
                             "99999999999999999999", "one"}) {
        EXPECT_EQ(number(text), std::nullopt) << text;
    }
    EXPECT_FALSE(convert(CTLVCell::TLV_INT, bytesOf(1), Syntax::Integer, true).has_value());
}

TEST(SnmpNumberInAnUnsignedCell, IsAnIntegerWhereOneIsDescribed)
{
    const auto value = convert(CTLVCell::TLV_UINT, bytesOf(7U), Syntax::Integer);

    EXPECT_EQ(value->syntax, Syntax::Integer);
    EXPECT_EQ(value->number, 7);
}

TEST(SnmpCell, CarriesTextWithItsNulAndNumbersInFourBytes)
{
    const auto text = talvik::toCell({Syntax::OctetString, 0, "ab"}, column(Syntax::OctetString));
    const auto number = talvik::toCell({Syntax::Integer, -2, ""}, column(Syntax::Integer));
    const auto natural =
        talvik::toCell({Syntax::Gauge32, 4294967295, ""}, column(Syntax::Unsigned32));
    const auto decimal = talvik::toCell({Syntax::Integer, 12, ""}, column(Syntax::Integer, true));
    const auto bytes = [](const CTLVCell& cell) {
        return std::string(cell.pData, cell.pData + cell.sDataLen);
    };

    EXPECT_EQ(text->usTagWord, 1U << 4 | CTLVCell::TLV_STRING);
    EXPECT_EQ(bytes(*text), std::string("ab\0", 3));
    EXPECT_EQ(number->usTagWord, 1U << 4 | CTLVCell::TLV_INT);
    EXPECT_EQ(bytes(*number), "\xFE\xFF\xFF\xFF");
    EXPECT_EQ(natural->usTagWord, 1U << 4 | CTLVCell::TLV_UINT);
    EXPECT_EQ(bytes(*natural), "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(decimal->usTagWord, 1U << 4 | CTLVCell::TLV_STRING);
    EXPECT_EQ(bytes(*decimal), std::string("12\0", 3));
}

TEST(SnmpIndex, IsANumberOrCountedOctets)
{
    talvik::ObjectId index;

    EXPECT_TRUE(talvik::appendIndex({Syntax::Integer, 7, ""}, index));
    EXPECT_TRUE(talvik::appendIndex({Syntax::OctetString, 0, "A\xFF"}, index));
    EXPECT_FALSE(talvik::appendIndex({Syntax::Integer, -1, ""}, index));

    EXPECT_EQ(index, (talvik::ObjectId{7, 2, 65, 255}));
}

TEST(SnmpDateAndTime, HasEightOrElevenOctets)
{
    auto when = column(Syntax::OctetString);
    when.isDateAndTime = true;
    for (const std::size_t size : {0U, 7U, 8U, 9U, 10U, 11U, 12U, 24U}) {
        const auto octets = cell(CTLVCell::TLV_OCTETS, 1, std::string(size, '\0'));
        std::string problem;

        const auto value = talvik::toSnmpValue(*octets, when, problem);

        EXPECT_EQ(value.has_value(), size == 8 || size == 11) << size;
        EXPECT_EQ(problem,
                  value ? "" : std::to_string(size) + " octets where a DateAndTime is due");
    }
}

}  // namespace
