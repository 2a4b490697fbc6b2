#include "framework/tlv_cell.h"

#include "tests/support/allocation_probe.h"
#include "tests/support/fake_host_test.h"
#include "tests/support/throw_text.h"

#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

using talvik::test::AllocationProbe;
using talvik::test::textOfThrown;

constexpr unsigned kUnknownType = 5;

/// A cell of any type code, with the value bytes given.
class TlvCell : public talvik::test::FakeHostTest {
protected:
    void make(unsigned type, unsigned tag, const std::vector<unsigned char>& bytes)
    {
        cell.setCell(static_cast<unsigned short>(tag << 4U | type),
                     reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }

    unsigned asUnsigned() const { return CTLVCell::ValueCast<unsigned int>()(&cell); }
    unsigned long long asLong() const { return CTLVCell::ValueCast<unsigned long long>()(&cell); }

    CTLVCell cell;
};

TEST_F(TlvCell, IsMadeWithTypeZeroTag4094AndNoData)
{
    EXPECT_EQ(cell.usTagWord & 0xF, 0);
    EXPECT_EQ(cell.usTagWord >> 4, 4094);
    EXPECT_EQ(cell.sDataLen, 0);
    EXPECT_EQ(cell.pData, nullptr);
}

TEST_F(TlvCell, NumericalCheckPassesForEveryTypeAboveTwo)
{
    for (unsigned type = 3; type <= 15; ++type) {
        make(type, 12, {1});
        EXPECT_NO_THROW(cell.checkNumerical()) << type;
    }
}

TEST_F(TlvCell, NumericalCheckNamesTheTagWithoutTheTypeBits)
{
    for (unsigned type = 0; type <= 2; ++type) {
        make(type, 12, {1});
        EXPECT_EQ(textOfThrown([this] { cell.checkNumerical(); }),
                  "CKEL_Exception: CTLVCell isn't numerical type! tag equal to 12");
    }
}

TEST_F(TlvCell, StringCheckPassesForTypeTwoOnly)
{
    make(2, 4095, {'x', 0});
    EXPECT_NO_THROW(cell.checkString());

    for (unsigned type : {0U, 1U, 3U, 4U, 9U, 15U}) {
        make(type, 4095, {1});
        EXPECT_EQ(textOfThrown([this] { cell.checkString(); }),
                  "CKEL_Exception: CTLVCell isn't string type! tag equal to 4095");
    }
}

TEST_F(TlvCell, ARefusedCheckChangesNothing)
{
    make(2, 3, {'o', 'k', 0});

    textOfThrown([this] { cell.checkNumerical(); });

    EXPECT_EQ(cell.usTagWord, 3 << 4 | 2);
    EXPECT_STREQ(reinterpret_cast<const char*>(cell.pData), "ok");
}

TEST_F(TlvCell, SetMakesAStringWithItsTerminatingNul)
{
    EXPECT_EQ(cell.set(5, "disk"), 0);

    EXPECT_EQ(cell.usTagWord, 5 << 4 | 2);
    ASSERT_EQ(cell.sDataLen, 5);
    EXPECT_STREQ(reinterpret_cast<const char*>(cell.pData), "disk");
}

TEST_F(TlvCell, SetOfNullMakesAStringWithoutData)
{
    EXPECT_EQ(cell.set(5, nullptr), 0);

    EXPECT_EQ(cell.usTagWord, 5 << 4 | 2);
    EXPECT_EQ(cell.sDataLen, 0);
    EXPECT_EQ(cell.pData, nullptr);
}

TEST_F(TlvCell, SetOfEmptyTextHasLengthOne)
{
    EXPECT_EQ(cell.set(5, ""), 0);

    ASSERT_EQ(cell.sDataLen, 1);
    EXPECT_EQ(cell.pData[0], 0);
}

TEST_F(TlvCell, SetReplacesWhatTheCellHeld)
{
    cell.set(5, "a longer text");
    cell.set(6, "b");

    EXPECT_EQ(cell.usTagWord >> 4, 6);
    EXPECT_EQ(cell.toString(), "b");
}

TEST_F(TlvCell, SetFromItsOwnBytesIsSafe)
{
    cell.set(5, "itself");
    cell.set(6, reinterpret_cast<const char*>(cell.pData));

    EXPECT_EQ(cell.toString(), "itself");
}

TEST_F(TlvCell, RefusesTextThatTheLengthFieldCannotHold)
{
    cell.set(5, "kept");
    const std::string text(65535, 'x');

    EXPECT_EQ(textOfThrown([&] { cell.set(6, text.c_str()); }),
              "CKEL_Exception: CTLVCell can't hold 65536 bytes! tag equal to 6");
    EXPECT_EQ(cell.toString(), "kept");
    EXPECT_EQ(cell.usTagWord >> 4, 5);
}

TEST_F(TlvCell, HoldsTheLongestTextThatFits)
{
    const std::string text(65534, 'x');

    cell.set(6, text.c_str());

    EXPECT_EQ(cell.sDataLen, 65535);
    EXPECT_EQ(cell.toString(), text);
}

TEST_F(TlvCell, RefusesATagOfMoreThanTwelveBits)
{
    EXPECT_EQ(textOfThrown([this] { cell.set(4096, "x"); }),
              "CKEL_Exception: CTLVCell can't have a tag above 4095! tag equal to 4096");
    EXPECT_EQ(cell.usTagWord >> 4, 4094);
}

/// A cell with a value that must not stay in memory that is freed.
class TlvCellReplacement : public TlvCell {
protected:
    TlvCellReplacement()
    {
        host.recording = false;
        cell.set(5, kSecret);
    }

    static constexpr char kSecret[] = "a community name nobody may read";
};

TEST_F(TlvCellReplacement, BySetIZeroesTheFormerBytesBeforeTheyAreFreed)
{
    AllocationProbe probe;
    probe.watchFor(kSecret);

    cell.set_i(CTLVCell::TLV_OCTETS, 6, "b", 1);

    EXPECT_EQ(probe.allocations(), 1U);
    EXPECT_EQ(probe.live(), 0);
    EXPECT_EQ(probe.freedWithBytes(), 0U);
}

TEST_F(TlvCellReplacement, BySetCellZeroesTheFormerBytesBeforeTheyAreFreed)
{
    AllocationProbe probe;
    probe.watchFor(kSecret);

    cell.setCell(6 << 4 | 1, "b", 1);

    EXPECT_EQ(probe.allocations(), 1U);
    EXPECT_EQ(probe.live(), 0);
    EXPECT_EQ(probe.freedWithBytes(), 0U);
}

TEST_F(TlvCellReplacement, ByNothingZeroesTheFormerBytesBeforeTheyAreFreed)
{
    AllocationProbe probe;
    probe.watchFor(kSecret);

    cell.setCell(6 << 4 | 1, nullptr, 0);

    EXPECT_EQ(probe.live(), -1);
    EXPECT_EQ(probe.freedWithBytes(), 0U);
    EXPECT_EQ(cell.pData, nullptr);
}

TEST_F(TlvCellReplacement, ThatFailsToAllocateKeepsTheFormerValue)
{
    AllocationProbe probe;
    probe.failAfter(0);

    EXPECT_THROW(cell.set_i(CTLVCell::TLV_OCTETS, 6, "b", 1), std::bad_alloc);

    EXPECT_EQ(probe.live(), 0);
    EXPECT_EQ(cell.usTagWord, 5 << 4 | 2);
    EXPECT_STREQ(reinterpret_cast<const char*>(cell.pData), kSecret);
}

TEST_F(TlvCellReplacement, ByDestructionZeroesTheBytesBeforeTheyAreFreed)
{
    auto owned = std::make_unique<CTLVCell>();
    owned->set(5, kSecret);
    AllocationProbe probe;
    probe.watchFor(kSecret);

    owned.reset();

    EXPECT_EQ(probe.live(), -2);
    EXPECT_EQ(probe.freedWithBytes(), 0U);
}

struct Conversion {
    const char* name;
    unsigned type;
    std::vector<unsigned char> bytes;
    unsigned asUnsigned;
    unsigned long long asLong;

    friend std::ostream& operator<<(std::ostream& os, const Conversion& row)
    {
        return os << row.name;
    }
};

class TlvCellConversion : public TlvCell, public testing::WithParamInterface<Conversion> {};

TEST_P(TlvCellConversion, ReadsTheNumber)
{
    const auto& row = GetParam();
    make(row.type, 1, row.bytes);

    EXPECT_EQ(asUnsigned(), row.asUnsigned);
    EXPECT_EQ(asLong(), row.asLong);
}

const Conversion kConversions[] = {
    {"NoBytes", 3, {}, 0, 0},
    {"NoBytesSigned", 4, {}, 0, 0},
    {"OneByte", 3, {0xFE}, 0xFE, 0xFE},
    {"OneByteSignedIsNotExtended", 4, {0xFE}, 0xFE, 0xFE},
    {"TwoBytes", 3, {0xFE, 0xFF}, 0xFFFE, 0xFFFE},
    {"TwoBytesSignedIsExtended", 4, {0xFE, 0xFF}, 4294967294U, 18446744073709551614ULL},
    {"TwoBytesSignedPositive", 4, {0xFE, 0x7F}, 0x7FFE, 0x7FFE},
    {"TwoBytesOfAStringAreUnsigned", 2, {0xFE, 0xFF}, 0xFFFE, 0xFFFE},
    {"TwoBytesOfAnotherNumericType", kUnknownType, {0xFE, 0xFF}, 0xFFFE, 0xFFFE},
    {"ThreeBytes", 3, {1, 2, 3}, 0x030201, 0x030201},
    {"ThreeBytesSignedIsNotExtended", 4, {0xFE, 0xFF, 0xFF}, 0xFFFFFE, 0xFFFFFE},
    {"FourBytes", 3, {0xFE, 0xFF, 0xFF, 0xFF}, 4294967294U, 4294967294ULL},
    {"FourBytesSignedIsNotExtendedTo64", 4, {0xFE, 0xFF, 0xFF, 0xFF}, 4294967294U, 4294967294ULL},
    {"FiveBytes", 4, {1, 2, 3, 4, 0xFF}, 0x04030201, 0xFF04030201ULL},
    {"SixBytes", 4, {1, 2, 3, 4, 5, 0xFF}, 0x04030201, 0xFF0504030201ULL},
    {"SevenBytes", 4, {1, 2, 3, 4, 5, 6, 0xFF}, 0x04030201, 0xFF060504030201ULL},
    {"EightBytes", 3, {1, 2, 3, 4, 5, 6, 7, 8}, 0x04030201, 0x0807060504030201ULL},
    {"NineBytesAreCut", 3, {1, 2, 3, 4, 5, 6, 7, 8, 9}, 0x04030201, 0x0807060504030201ULL},
};

INSTANTIATE_TEST_SUITE_P(Widths, TlvCellConversion, testing::ValuesIn(kConversions),
                         [](const auto& row) { return row.param.name; });

struct Printed {
    const char* name;
    unsigned type;
    std::vector<unsigned char> bytes;
    const char* text;

    friend std::ostream& operator<<(std::ostream& os, const Printed& row) { return os << row.name; }
};

class TlvCellText : public TlvCell, public testing::WithParamInterface<Printed> {};

TEST_P(TlvCellText, ShowsTheValue)
{
    make(GetParam().type, 1, GetParam().bytes);

    EXPECT_EQ(cell.toString(), GetParam().text);
}

const Printed kPrinted[] = {
    {"Text", 2, {'a', 'b', 0}, "ab"},
    {"TextWithoutNul", 2, {'a', 'b'}, "ab"},
    {"TextUpToItsFirstNul", 2, {'a', 0, 'b', 0}, "a"},
    {"NoText", 2, {}, ""},
    {"Unsigned", 3, {0xFE, 0xFF, 0xFF, 0xFF}, "4294967294"},
    {"Signed", 4, {0xFE, 0xFF, 0xFF, 0xFF}, "-2"},
    {"SignedOneByte", 4, {0xFE}, "-2"},
    {"SignedWithoutBytes", 4, {}, "0"},
    {"Octets", 1, {0x07, 0xEA}, "07EA"},
    {"Untyped", 0, {}, ""},
};

INSTANTIATE_TEST_SUITE_P(Types, TlvCellText, testing::ValuesIn(kPrinted),
                         [](const auto& row) { return row.param.name; });

}  // namespace
