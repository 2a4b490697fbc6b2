#include "tests/unit/trap/trap_handler_test.h"

#include <initializer_list>

namespace {

using namespace std::string_literals;

struct Width {
    const char* name;
    CTLVCell::ETLVType type;
    std::string bytes;
    unsigned value;

    friend std::ostream& operator<<(std::ostream& os, const Width& row) { return os << row.name; }
};

class TrapNumber : public talvik::test::TrapHandlerTest,
                   public testing::WithParamInterface<Width> {};

TEST_P(TrapNumber, IsTakenAsThirtyTwoBitsUnsigned)
{
    text(1, "192.0.2.1");
    for (const auto tag : std::initializer_list<unsigned short>{2, 5, 7}) {
        cell(tag, GetParam().type, GetParam().bytes);
    }

    EXPECT_EQ(create(), 0);

    const unsigned value = GetParam().value;
    expectOnlyChange("createTrapAddr", {"", "192.0.2.1", value, value, value, "--"});
}

const Width kWidths[] = {
    {"NoByte", CTLVCell::TLV_UINT, "", 0},
    {"OneByte", CTLVCell::TLV_UINT, "\xFE", 254},
    {"OneSignedByte", CTLVCell::TLV_INT, "\xFE", 254},
    {"TwoBytes", CTLVCell::TLV_UINT, "\xFE\xFF", 65534},
    {"TwoSignedBytes", CTLVCell::TLV_INT, "\xFE\xFF", 4294967294U},
    {"ThreeSignedBytes", CTLVCell::TLV_INT, "\xFE\xFF\xFF", 0xFFFFFE},
    {"FourSignedBytes", CTLVCell::TLV_INT, "\xFE\xFF\xFF\xFF", 4294967294U},
    {"EightBytes", CTLVCell::TLV_UINT, "\x01\x02\x00\x00\x09\x00\x00\x00"s, 0x201},
    {"HighestNumericType", CTLVCell::TLV_NUMERIC_LAST, "\x07\x00"s, 7},
};

INSTANTIATE_TEST_SUITE_P(Widths, TrapNumber, testing::ValuesIn(kWidths),
                         [](const auto& row) { return row.param.name; });

}  // namespace
