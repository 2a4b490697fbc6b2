#include "backend/protocol.h"

#include "tests/unit/backend/wire.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace talvik::backend;
using talvik::test::Wire;

std::unique_ptr<CTLVRecordV3> recordWithCells(std::uint64_t id, int count, unsigned short length)
{
    auto record = std::make_unique<CTLVRecordV3>(id);
    const std::string value(length, 'x');
    for (int i = 0; i < count; ++i) {
        auto cell = std::make_unique<CTLVCell>();
        cell->set_i(CTLVCell::TLV_OCTETS, static_cast<unsigned short>(i % 4096), value.data(),
                    length);
        record->append(cell.get());
        cell.release();
    }
    return record;
}

void append(Package& package, std::unique_ptr<CTLVRecordV3> record)
{
    package.oRecords.push_back(record.get());
    record.release();
}

TEST(BackendProtocol, ANewPackageIsARequestWithoutAttribute)
{
    Package package;

    EXPECT_EQ(kindOf(package.oHead), MessageKind::Request);
    EXPECT_EQ(exchangeOf(package.oHead), 0U);
    EXPECT_EQ(encoded(package), Wire::header(1, 0, 0xFFFFFFFF, 0).bytes());
}

TEST(BackendProtocol, WritesKindExchangeAndResultWhereTheyBelong)
{
    Package package;

    setKind(package.oHead, MessageKind::Acknowledgement);
    setExchange(package.oHead, 0x01020304);
    setResult(package.oHead, 0x0A0B0C0D);

    EXPECT_EQ(encoded(package), Wire::header(4, 0x01020304, 0x0A0B0C0D, 0).bytes());
}

TEST(BackendProtocol, ReadsKindExchangeAndResultFromHandWrittenBytes)
{
    auto wire = Wire::header(3, 77, 0x1000010, 0).bytes();
    Package package;

    decodeInto(package, wire);

    EXPECT_EQ(kindOf(package.oHead), MessageKind::Notification);
    EXPECT_EQ(exchangeOf(package.oHead), 77U);
    EXPECT_EQ(resultOf(package.oHead), result::kUnknownCommand);
}

TEST(BackendProtocol, RefusesBytesThatDoNotParse)
{
    auto wire = Wire::header(1, 1, 0, 11).u64(1).u16(2).bytes();
    wire.push_back(0);
    Package package;

    EXPECT_THROW(decodeInto(package, wire), ProtocolError);
}

TEST(BackendProtocol, RefusesToEncodeARecordThatNobodyCouldDecode)
{
    Package fits;
    Package tooLong;
    append(fits, recordWithCells(1, 1, 65521));
    append(tooLong, recordWithCells(1, 1, 65522));

    EXPECT_EQ(encoded(fits).size(), kHeaderSize + 10U + kMaxRecordLength);
    EXPECT_THROW(encoded(tooLong), ProtocolError);
}

TEST(BackendProtocol, RefusesMoreRecordsThanAPackageMayHaveBeforeItMakesOne)
{
    const std::uint32_t count = kMaxRecords + 1;
    auto wire = Wire::header(1, 1, 0, count * 10).bytes();
    wire.resize(kHeaderSize + std::size_t{count} * 10);
    Package package;

    EXPECT_THROW(decodeInto(package, wire), ProtocolError);
}

TEST(BackendProtocol, RefusesFewerBytesThanAHeader)
{
    auto wire = Wire::header(1, 1, 0, 0).truncate(27).bytes();
    Package package;

    EXPECT_THROW(decodeInto(package, wire), ProtocolError);
}

TEST(BackendProtocol, RefusesToEncodeMoreThanAPackageMayHold)
{
    Package package;
    for (int i = 0; i < 257; ++i) {
        append(package, recordWithCells(1, 1, 65400));
    }

    EXPECT_THROW(encoded(package), ProtocolError);
}

}  // namespace
