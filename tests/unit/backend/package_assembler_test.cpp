#include "backend/package_assembler.h"

#include "tests/unit/backend/wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace talvik::backend;
using talvik::test::Wire;
using testing::HasSubstr;

void feed(PackageAssembler& assembler, const Bytes& bytes)
{
    assembler.append(bytes.data(), bytes.size());
}

std::string refusalOf(const Bytes& bytes)
{
    PackageAssembler assembler;
    feed(assembler, bytes);
    try {
        assembler.next();
    } catch (const ProtocolError& error) {
        return error.what();
    }
    return "not refused";
}

TEST(PackageAssembler, PutsAPackageTogetherFromSingleBytes)
{
    const auto wire = Wire::reply(5, 4001, "abc").bytes();
    PackageAssembler assembler;

    for (std::size_t i = 0; i + 1 < wire.size(); ++i) {
        assembler.append(&wire[i], 1);
        ASSERT_FALSE(assembler.next()) << "after byte " << i;
    }
    assembler.append(&wire.back(), 1);

    EXPECT_EQ(assembler.next(), wire);
    EXPECT_EQ(assembler.held(), 0U);
}

TEST(PackageAssembler, CutsSeveralPackagesOutOfOnePiece)
{
    const auto first = Wire::request(1, 4001);
    const auto second = Wire::refusal(2, 9);
    const auto third = Wire::reply(3, 4001, "x");
    PackageAssembler assembler;

    feed(assembler, Wire(first).append(second).append(third).bytes());

    EXPECT_EQ(assembler.next(), first.bytes());
    EXPECT_EQ(assembler.next(), second.bytes());
    EXPECT_EQ(assembler.next(), third.bytes());
    EXPECT_FALSE(assembler.next());
}

TEST(PackageAssembler, KeepsTheBeginningOfTheNextPackage)
{
    const auto first = Wire::request(1, 4001).bytes();
    const auto second = Wire::request(2, 4001).bytes();
    PackageAssembler assembler;

    feed(assembler, first);
    assembler.append(second.data(), 30);
    ASSERT_EQ(assembler.next(), first);
    assembler.append(second.data() + 30, second.size() - 30);

    EXPECT_EQ(assembler.next(), second);
}

TEST(PackageAssembler, SaysHowManyBytesItStillNeeds)
{
    const auto wire = Wire::request(1, 4001).bytes();
    PackageAssembler assembler;

    EXPECT_EQ(assembler.missing(), 28U);
    assembler.append(wire.data(), 20);
    EXPECT_EQ(assembler.missing(), 8U);
    assembler.append(wire.data() + 20, 8);
    EXPECT_EQ(assembler.missing(), 10U);
    assembler.append(wire.data() + 28, 10);
    EXPECT_EQ(assembler.missing(), 0U);
}

TEST(PackageAssembler, RefusesAWrongMagicAfterFourBytes)
{
    EXPECT_EQ(refusalOf({'G', 'E', 'T', ' '}), "magic 0x20544547 in a header, 0x55555555 is due");
    EXPECT_EQ(refusalOf({'G', 'E', 'T'}), "not refused");
}

TEST(PackageAssembler, RefusesAWrongVersionAfterEightBytes)
{
    EXPECT_EQ(refusalOf({0x55, 0x55, 0x55, 0x55, 4, 0, 0, 0}),
              "version 0x00000004 in a header, 0x00000003 is due");
}

TEST(PackageAssembler, RefusesAHeaderThatPromisesTooMuchWithoutWaitingForIt)
{
    const auto most = static_cast<std::uint32_t>(kMaxPackageSize - kHeaderSize);

    EXPECT_EQ(refusalOf(Wire::header(1, 1, 0, most).bytes()), "not refused");
    EXPECT_THAT(refusalOf(Wire::header(1, 1, 0, most + 1).bytes()), HasSubstr("promises 16777189"));
    EXPECT_THAT(refusalOf(Wire::header(1, 1, 0, 0xFFFFFFFF).bytes()),
                HasSubstr("promises 4294967295"));
}

}  // namespace
