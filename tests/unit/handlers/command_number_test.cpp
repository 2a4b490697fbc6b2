#include "handlers/command_number.h"

#include "tests/support/fake_host_test.h"

#include <new>
#include <ostream>

namespace {

struct Text {
    const char* name;
    const char* text;
    long long number;

    friend std::ostream& operator<<(std::ostream& os, const Text& row) { return os << row.name; }
};

class CommandNumber : public talvik::test::FakeHostTest,
                      public testing::WithParamInterface<Text> {};

TEST_P(CommandNumber, IsSignedDecimalText)
{
    host.deviceItems[{"COMMAND", "KEY"}] = GetParam().text;

    EXPECT_EQ(talvik::commandNumber("KEY"), GetParam().number);
}

const Text kTexts[] = {
    {"Number", "4002", 4002},
    {"NoNumber", "alarms", 0},
    {"Empty", "", 0},
    {"TrailingText", "12x", 12},
    {"LeadingBlank", " 12", 12},
    {"Hexadecimal", "0x10", 0},
    {"Octal", "010", 10},
    {"Negative", "-1", -1},
    {"MoreThan32Bits", "55847747766", 55847747766},
    {"SixtyThreeBits", "9223372036854775807", 9223372036854775807},
    {"TheLowest", "-9223372036854775808", -9223372036854775807 - 1},
    {"MoreThan64Bits", "99999999999999999999", 9223372036854775807},
};

INSTANTIATE_TEST_SUITE_P(Texts, CommandNumber, testing::ValuesIn(kTexts),
                         [](const auto& row) { return row.param.name; });

class CommandNumberItem : public talvik::test::FakeHostTest {};

TEST_F(CommandNumberItem, IsZeroWhenItIsNotConfigured)
{
    host.deviceItems[{"COMMAND", "OTHER"}] = "7";
    host.deviceItems[{"OTHER", "KEY"}] = "8";

    EXPECT_EQ(talvik::commandNumber("KEY"), 0);
}

TEST_F(CommandNumberItem, PassesOnThatThereIsNoMemory)
{
    host.onCall("getDeviceItem", [] { throw std::bad_alloc(); });

    EXPECT_THROW(talvik::commandNumber("KEY"), std::bad_alloc);
}

}  // namespace
