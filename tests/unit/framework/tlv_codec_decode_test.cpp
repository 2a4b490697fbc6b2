#include "tests/support/codec_test.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace talvik::test {

class TlvDecode : public CodecTest {};

TEST_F(TlvDecode, ReadsAHandWrittenPackage)
{
    const std::uint8_t wire[] = {
        0x55, 0x55, 0x55, 0x55, 0x03, 0,    0,    0,            // magic, version
        0x11, 0x12, 0x13, 0x14, 0x21, 0x22, 0x23, 0x24,         // word 2, word 3
        0x31, 0x32, 0x41, 0x42, 0x51, 0x52, 0x61, 0x62,         // shorts 0 to 3
        33,   0,    0,    0,                                    // bytes of records
        8,    7,    6,    5,    4,    3,    2,    1,    13, 0,  // record id, bytes of cells
        0x53, 0,    4,    0,    0x78, 0x56, 0x34, 0x12,         // tag 5, type 3, four bytes
        0xF2, 0xFF, 1,    0,    0,                              // tag 4095, type 2, an empty text
        1,    0,    0,    0,    0,    0,    0,    0x80, 0,  0,  // record without cells
    };
    std::vector<std::uint8_t> copy(std::begin(wire), std::end(wire));

    ASSERT_EQ(package.decode(copy.data(), sizeof wire), 33U);

    ASSERT_EQ(package.oRecords.size(), 2U);
    const CTLVRecordV3& first = *package[0];
    EXPECT_EQ(first.ullRecordId, 0x0102030405060708U);
    EXPECT_THAT(cells(first), ElementsAre("3:5=\x78\x56\x34\x12", std::string("2:4095=\0", 8)));
    EXPECT_EQ(CTLVCell::ValueCast<unsigned>()(first[5]), 0x12345678U);
    EXPECT_EQ(package[1]->ullRecordId, 0x8000000000000001U);
    EXPECT_THAT(cells(*package[1]), IsEmpty());
    EXPECT_EQ(package.oHead.uiMagic, 0x55555555U);
    EXPECT_EQ(package.oHead.uiVersion, 3U);
    EXPECT_EQ(package.oHead.uiWord2, 0x14131211U);
    EXPECT_EQ(package.oHead.uiWord3, 0x24232221U);
    EXPECT_EQ(package.oHead.usShort0, 0x3231U);
    EXPECT_EQ(package.oHead.usShort1, 0x4241U);
    EXPECT_EQ(package.oHead.usShort2, 0x5251U);
    EXPECT_EQ(package.oHead.usShort3, 0x6261U);
    EXPECT_EQ(package.oHead.uiDataLen, 33U);
    EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(TlvDecode, TakesOverTheHeaderOfAPackageWithoutRecords)
{
    package.oHead.uiDataLen = 99;
    const auto wire =
        WireBytes().u32(0x55555555).u32(3).u32(7).u32(8).u16(1).u16(2).u16(3).u16(4).u32(0);

    EXPECT_EQ(decode(wire), 0U);

    EXPECT_THAT(package.oRecords, IsEmpty());
    EXPECT_EQ(package.oHead.uiWord2, 7U);
    EXPECT_EQ(package.oHead.uiWord3, 8U);
    EXPECT_EQ(package.oHead.usShort3, 4U);
    EXPECT_EQ(package.oHead.uiDataLen, 0U);
}

TEST_F(TlvDecode, LeavesMagicAndVersionOfThePackageAlone)
{
    package.oHead.uiMagic = 1;
    package.oHead.uiVersion = 2;

    EXPECT_EQ(decode(WireBytes::header(0)), 0U);

    EXPECT_EQ(package.oHead.uiMagic, 1U);
    EXPECT_EQ(package.oHead.uiVersion, 2U);
}

TEST_F(TlvDecode, IgnoresBytesBehindTheAnnouncedOnes)
{
    const auto record = WireBytes::record(1, {});

    EXPECT_EQ(decode(WireBytes::package(record).fill(5, 0xFF)), 10U);

    EXPECT_EQ(package.oRecords.size(), 1U);
}

TEST_F(TlvDecode, AppendsToTheRecordsThatThePackageHolds)
{
    ASSERT_TRUE(accepts(WireBytes::record(1, {})));
    CTLVRecordV3* const held = package[0];

    ASSERT_TRUE(accepts(WireBytes::record(2, {}).append(WireBytes::record(3, {}))));

    ASSERT_EQ(package.oRecords.size(), 3U);
    EXPECT_EQ(package[0], held);
    EXPECT_EQ(package[2]->ullRecordId, 3U);
}

TEST_F(TlvDecode, EmptiesThePackageAndKeepsItsHeaderWhenARecordIsRefused)
{
    ASSERT_TRUE(accepts(WireBytes::record(1, {})));
    package.oHead.uiWord2 = 77;
    const auto before = headerBytes();

    EXPECT_EQ(decode(WireBytes::package(WireBytes::record(2, {}).u64(3).u16(1))), kCodecFailed);

    EXPECT_THAT(package.oRecords, IsEmpty());
    EXPECT_EQ(headerBytes(), before);
}

TEST_F(TlvDecode, EmptiesThePackageThroughItsOwnClear)
{
    class CountingPackage : public Package {
    public:
        void clear() noexcept override
        {
            ++clears;
            Package::clear();
        }
        int clears = 0;
    } counting;
    auto wire = WireBytes::header(5).fill(5).exactCopy();

    EXPECT_EQ(counting.decode(wire.get(), 33), kCodecFailed);

    EXPECT_EQ(counting.clears, 1);
}

TEST_F(TlvDecode, AcceptsEveryTypeCodeUpToNine)
{
    WireBytes cellBytes;
    for (unsigned type = 0; type <= 9; ++type) {
        cellBytes.cell(type, type, "x");
    }

    ASSERT_TRUE(accepts(WireBytes::record(1, cellBytes)));

    EXPECT_EQ(package[0]->pCells->size(), 10U);
}

TEST_F(TlvDecode, KeepsCellsOfTheSameTagAndFindsTheFirst)
{
    ASSERT_TRUE(accepts(WireBytes::record(1, WireBytes().cell(2, 6, "one").cell(2, 6, "two"))));

    EXPECT_THAT(cells(*package[0]), ElementsAre("2:6=one", "2:6=two"));
    EXPECT_EQ((*package[0])[6], package[0]->pCells->front());
}

TEST_F(TlvDecode, MakesAnIndexOfAtLeast32Buckets)
{
    WireBytes few;
    WireBytes many;
    for (unsigned tag = 0; tag < 33; ++tag) {
        many.cell(1, tag, "");
        if (tag < 32) {
            few.cell(1, tag, "");
        }
    }

    ASSERT_TRUE(accepts(WireBytes::record(1, {})
                            .append(WireBytes::record(2, few))
                            .append(WireBytes::record(3, many))));

    EXPECT_EQ(package[0]->oTagIndex.total_size(), 32U);
    EXPECT_EQ(package[1]->oTagIndex.total_size(), 32U);
    EXPECT_EQ(package[2]->oTagIndex.total_size(), 33U);
    EXPECT_EQ(package[2]->oTagIndex.current_size(), 33U);
}

TEST_F(TlvDecode, HandsEveryCellToTheHostInOrder)
{
    host.calls.clear();

    ASSERT_TRUE(accepts(WireBytes::record(1, WireBytes().cell(2, 1, "a").cell(2, 2, "b"))));

    EXPECT_THAT(host.calls, ElementsAre("setCell", "append", "setCell", "append"));
}

TEST_F(TlvDecode, DumpsHeaderAndRecordsBetweenBraces)
{
    ASSERT_TRUE(accepts(WireBytes::record(1, WireBytes().cell(2, 1, "a"))));
    std::ostringstream head;
    std::ostringstream record;
    package.oHead.dump(head);
    package[0]->dump(record);
    std::ostringstream os;

    package.dump(os);

    EXPECT_EQ(os.str(), "{\n" + head.str() + record.str() + "}\n");
}

TEST_F(TlvDecode, FlushesTheDumpAfterEachOfItsLines)
{
    class FlushCounter : public std::stringbuf {
    public:
        int flushes = 0;

    protected:
        int sync() override
        {
            ++flushes;
            return 0;
        }
    } counter;
    std::ostringstream os;
    os.std::ostream::rdbuf(&counter);

    package.dump(os);

    EXPECT_EQ(counter.flushes, 2);
}

class TlvGetRecord : public CodecTest {
protected:
    u_int get(const WireBytes& wire)
    {
        record = reinterpret_cast<CTLVRecordV3*>(1);
        const auto copy = wire.exactCopy();
        return package.getRecord(copy.get(), static_cast<unsigned>(wire.size()), record);
    }

    CTLVRecordV3* record = nullptr;
};

TEST_F(TlvGetRecord, HandsOutARecordThatTheCallerOwns)
{
    EXPECT_EQ(get(WireBytes::record(9, WireBytes().cell(2, 1, "a")).fill(3)), 15U);

    const std::unique_ptr<CTLVRecordV3> owner(record);
    EXPECT_EQ(record->ullRecordId, 9U);
    EXPECT_THAT(package.oRecords, IsEmpty());
}

TEST_F(TlvGetRecord, TakesTenBytesForARecordWithoutCells)
{
    EXPECT_EQ(get(WireBytes::record(9, {})), 10U);

    const std::unique_ptr<CTLVRecordV3> owner(record);
    EXPECT_THAT(*record->pCells, IsEmpty());
}

TEST_F(TlvGetRecord, GivesNullForARefusedRecord)
{
    EXPECT_EQ(get(WireBytes::record(9, WireBytes().u8(0))), 0U);

    EXPECT_EQ(record, nullptr);
}

TEST_F(TlvGetRecord, ReadsNothingBehindTooFewBytes)
{
    EXPECT_EQ(get(WireBytes().fill(9, 0xFF)), 0U);

    EXPECT_EQ(record, nullptr);
    EXPECT_THAT(texts(), ElementsAre(recordLine(
                             " : record length is too long, (usRecordLen + MIN_RECORD_SIZE) "
                             "> uiBufSize ->0+10 < 9")));
}

}  // namespace talvik::test
