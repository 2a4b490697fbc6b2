#include "host/snmp/column_write.h"

#include "tests/unit/host_snmp/writable_table_kit.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using talvik::ColumnWrite;
using talvik::ObjectId;
using talvik::SetError;
using talvik::SnmpValue;
using talvik::Syntax;
using Error = std::optional<SetError>;

SnmpValue integer(std::int64_t number)
{
    return {Syntax::Integer, number, ""};
}

SnmpValue gauge(std::int64_t number)
{
    return {Syntax::Gauge32, number, ""};
}

SnmpValue text(const std::string& octets)
{
    return {Syntax::OctetString, 0, octets};
}

struct Write {
    const char* name;
    ObjectId suffix;
    std::optional<SnmpValue> value;
    Error error;

    friend std::ostream& operator<<(std::ostream& os, const Write& row) { return os << row.name; }
};

class ColumnWriteOf : public testing::TestWithParam<Write> {};

TEST_P(ColumnWriteOf, GetsTheFirstErrorInTheProtocolsOrder)
{
    const auto table = talvik::test::trapTable();
    ColumnWrite write;

    EXPECT_EQ(talvik::checkWrite(table, {GetParam().suffix, GetParam().value}, write),
              GetParam().error);
}

const Error kFine = std::nullopt;

const Write kWrites[] = {
    {"AnAddress", {1, 6, 1}, text("192.0.2.1"), kFine},
    {"AnAddressOfVersion6", {1, 6, 1}, text("2001:db8::1"), kFine},
    {"AName", {1, 1, 2147483647}, text("traps.example.net"), kFine},
    {"TheLeastPort", {1, 2, 1}, gauge(1), kFine},
    {"TheGreatestPort", {1, 2, 1}, gauge(65535), kFine},
    {"Destroy", {1, 3, 1}, integer(6), kFine},
    {"AVersion", {1, 5, 1}, integer(3), kFine},
    {"AType", {1, 7, 1}, integer(7), kFine},
    {"AUserInUtf8", {1, 8, 1}, text("J\xC3\xB6rg"), kFine},

    {"AnUnknownColumn", {1, 9, 1}, integer(1), SetError::NotWritable},
    {"AnotherEntry", {2, 2, 1}, gauge(1), SetError::NotWritable},
    {"TheTableItself", {}, gauge(1), SetError::NotWritable},
    {"TheIndex", {1, 4, 1}, integer(1), SetError::NotWritable},
    {"NoIndex", {1, 2}, gauge(1), SetError::NoCreation},
    {"IndexZero", {1, 2, 0}, gauge(1), SetError::NoCreation},
    {"AnIndexTooLarge", {1, 2, 2147483648}, gauge(1), SetError::NoCreation},
    {"TwoIndexes", {1, 2, 1, 1}, gauge(1), SetError::NoCreation},

    {"APortAsInteger", {1, 2, 1}, integer(162), SetError::WrongType},
    {"APortAsText", {1, 2, 1}, text("162"), SetError::WrongType},
    {"AVersionAsGauge", {1, 5, 1}, gauge(2), SetError::WrongType},
    {"AnAddressOfATypeThatNoColumnHas", {1, 6, 1}, std::nullopt, SetError::WrongType},
    {"AnEmptyAddress", {1, 6, 1}, text(""), SetError::WrongLength},
    {"AnAddressTooLong", {1, 6, 1}, text(std::string(256, 'a')), SetError::WrongLength},
    {"AUserTooLong", {1, 8, 1}, text(std::string(33, 'a')), SetError::WrongLength},
    {"PortZero", {1, 2, 1}, gauge(0), SetError::WrongValue},
    {"APortTooLarge", {1, 2, 1}, gauge(65536), SetError::WrongValue},
    {"AnUnknownVersion", {1, 5, 1}, integer(4), SetError::WrongValue},
    {"AnUnknownType", {1, 7, 1}, integer(4), SetError::WrongValue},
    {"NotInService", {1, 3, 1}, integer(2), SetError::WrongValue},
    {"NotReady", {1, 3, 1}, integer(3), SetError::WrongValue},
    {"CreateAndWait", {1, 3, 1}, integer(5), SetError::WrongValue},
    {"NoRowStatus", {1, 3, 1}, integer(0), SetError::WrongValue},
    {"NoDestination", {1, 6, 1}, text("not an address"), SetError::WrongValue},
    {"NoUsableDestination", {1, 1, 1}, text("300.1.1.1"), SetError::WrongValue},
    {"AUserWithANul", {1, 8, 1}, text(std::string("a\0b", 3)), SetError::WrongValue},
    {"AUserWithALineFeed", {1, 8, 1}, text("a\nb"), SetError::WrongValue},
    {"AUserWithDelete", {1, 8, 1}, text("a\x7F"), SetError::WrongValue},
    {"AUserInLatin1", {1, 8, 1}, text("J\xF6rg"), SetError::WrongValue},

    {"TypeBeforeIndex", {1, 2, 0}, integer(1), SetError::WrongType},
    {"LengthBeforeIndex", {1, 6, 0}, text(""), SetError::WrongLength},
    {"ValueBeforeIndex", {1, 2, 0}, gauge(0), SetError::WrongValue},
    {"AccessBeforeType", {1, 4, 0}, text(""), SetError::NotWritable},
    {"ColumnBeforeIndex", {1, 9, 0}, gauge(1), SetError::NotWritable},
};

INSTANTIATE_TEST_SUITE_P(Variable, ColumnWriteOf, testing::ValuesIn(kWrites),
                         [](const auto& row) { return row.param.name; });

TEST(ColumnWrite, TellsColumnRowAndValueInTheColumnsSyntax)
{
    const auto table = talvik::test::trapTable();
    ColumnWrite write;

    ASSERT_EQ(talvik::checkWrite(table, {{1, 2, 17}, gauge(162)}, write), kFine);

    EXPECT_EQ(write.column->name, "talvikTrapPort");
    EXPECT_EQ(write.row, 17u);
    EXPECT_EQ(write.value.number, 162);
    EXPECT_EQ(write.value.syntax, Syntax::Unsigned32);
}

TEST(ColumnWrite, KeepsToTheIndexColumnsRange)
{
    auto table = talvik::test::trapTable();
    table.columns[table.index.front()].range = talvik::Bounds{5, 9};
    ColumnWrite write;

    EXPECT_EQ(talvik::checkWrite(table, {{1, 2, 4}, gauge(1)}, write), SetError::NoCreation);
    EXPECT_EQ(talvik::checkWrite(table, {{1, 2, 5}, gauge(1)}, write), kFine);
    EXPECT_EQ(talvik::checkWrite(table, {{1, 2, 10}, gauge(1)}, write), SetError::NoCreation);
}

TEST(ColumnWrite, IsNeverPossibleWithoutARowStatus)
{
    ColumnWrite write;

    EXPECT_EQ(talvik::checkWrite(talvik::test::smallTable(), {{1, 9, 1}, gauge(1)}, write),
              SetError::NotWritable);
}

}  // namespace
