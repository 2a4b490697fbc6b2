#include "tests/support/codec_test.h"

#include <gmock/gmock.h>

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

namespace talvik::test {

class TlvEncode : public CodecTest {
protected:
    CTLVRecordV3& addRecord(std::uint64_t id)
    {
        package.oRecords.push_back(new CTLVRecordV3(id));
        return *package.oRecords.back();
    }

    static void addCell(CTLVRecordV3& record, CTLVCell::ETLVType type, unsigned short tag,
                        const std::string& value)
    {
        auto* cell = new CTLVCell;
        cell->set_i(type, tag, value.data(), value.size());
        record.append(cell);
    }
};

TEST_F(TlvEncode, WritesTheBytesOfAHandWrittenPackage)
{
    package.oHead.uiWord2 = 0x14131211;
    package.oHead.usShort3 = 0x6261;
    CTLVRecordV3& record = addRecord(0x0102030405060708);
    addCell(record, CTLVCell::TLV_UINT, 5, "\x78\x56\x34\x12");
    addCell(record, CTLVCell::TLV_STRING, 4095, std::string(1, '\0'));
    addRecord(0x8000000000000001);

    EXPECT_THAT(encoded(),
                ElementsAreArray<std::uint8_t>({
                    0x55, 0x55, 0x55, 0x55, 3,    0,    0,    0,    0x11, 0x12, 0x13, 0x14, 0xFF,
                    0xFF, 0xFF, 0xFF, 0xFD, 0xFF, 1,    0,    0xFF, 0xFF, 0x61, 0x62, 33,   0,
                    0,    0,    8,    7,    6,    5,    4,    3,    2,    1,    13,   0,    0x53,
                    0,    4,    0,    0x78, 0x56, 0x34, 0x12, 0xF2, 0xFF, 1,    0,    0,    1,
                    0,    0,    0,    0,    0,    0,    0x80, 0,    0,
                }));
    EXPECT_EQ(package.oHead.uiDataLen, 33U);
}

TEST_F(TlvEncode, WritesOnlyAHeaderForAPackageWithoutRecords)
{
    package.oHead.uiDataLen = 99;

    EXPECT_EQ(encoded(), WireBytes::header(0).bytes());

    EXPECT_EQ(package.oHead.uiDataLen, 0U);
}

TEST_F(TlvEncode, WritesWhatDecodeReadsBack)
{
    CTLVRecordV3& record = addRecord(7);
    addCell(record, CTLVCell::TLV_INT, 1, "\xFE\xFF");
    addCell(record, CTLVCell::TLV_NONE, 0, "");
    addCell(record, CTLVCell::TLV_STRING, 1, "twice");
    package.oHead.usShort0 = 42;
    auto bytes = encoded();
    Package other;

    ASSERT_EQ(other.decode(bytes.data(), static_cast<unsigned>(bytes.size())), bytes.size() - 28);

    ASSERT_EQ(other.oRecords.size(), 1U);
    EXPECT_EQ(other[0]->ullRecordId, 7U);
    EXPECT_EQ(cells(*other[0]), cells(record));
    EXPECT_EQ(other.oHead.usShort0, 42U);
    EXPECT_EQ(other.oHead.uiDataLen, package.oHead.uiDataLen);
}

TEST_F(TlvEncode, RefusesABufferOneByteShortAndWritesNothing)
{
    addCell(addRecord(1), CTLVCell::TLV_STRING, 1, "ab");
    package.oHead.uiDataLen = 99;
    std::vector<std::uint8_t> buffer(43, 0xEE);

    EXPECT_EQ(package.encode(buffer.data(), 43), kCodecFailed);

    EXPECT_THAT(buffer, Each(0xEE));
    EXPECT_EQ(package.oHead.uiDataLen, 99U);
    EXPECT_THAT(texts(),
                ElementsAre("buf size is less than data size! buf size=43, data size=44!\n"));
}

TEST_F(TlvEncode, WritesNothingBehindItsBytes)
{
    addCell(addRecord(1), CTLVCell::TLV_STRING, 1, "ab");
    std::vector<std::uint8_t> buffer(50, 0xEE);

    EXPECT_EQ(package.encode(buffer.data(), 50), 44U);

    EXPECT_EQ(buffer[43], 'b');
    EXPECT_THAT(std::vector<std::uint8_t>(buffer.begin() + 44, buffer.end()), Each(0xEE));
}

TEST_F(TlvEncode, RefusesANullBuffer)
{
    EXPECT_EQ(package.encode(nullptr, 100), kCodecFailed);

    EXPECT_THAT(texts(), ElementsAre("buf pointer is null!\n"));
}

TEST_F(TlvEncode, GoesOnWhenTheHostsCopyFails)
{
    addRecord(0x0A);
    host.memcpyResult = 22;
    std::vector<std::uint8_t> buffer(38, 0xEE);

    EXPECT_EQ(package.encode(buffer.data(), 38), 38U);

    EXPECT_THAT(aceLog.lines, ElementsAre("memcpy_s is failed!\n"));
    EXPECT_EQ(aceLog.facts.front().priority, LM_ERROR);
    EXPECT_EQ(buffer[27], 0xEE);
    EXPECT_EQ(buffer[28], 0x0A);
    EXPECT_EQ(package.oHead.uiDataLen, 10U);
}

TEST_F(TlvEncode, GoesOnInItsOwnBufferWhenTheHostsCopyFails)
{
    host.memcpyResult = 22;
    unsigned char* bytes = nullptr;

    EXPECT_EQ(package.encode(bytes), 28U);

    const std::unique_ptr<unsigned char[]> owner(bytes);
    EXPECT_NE(bytes, nullptr);
    EXPECT_THAT(aceLog.lines, ElementsAre("memcpy_s is failed!\n"));
}

TEST_F(TlvEncode, CutsTheLengthFieldOfARecordBeyond16Bits)
{
    CTLVRecordV3& record = addRecord(1);
    addCell(record, CTLVCell::TLV_OCTETS, 1, std::string(65535, 'a'));
    addCell(record, CTLVCell::TLV_OCTETS, 2, "b");
    addRecord(2);

    const auto bytes = encoded();

    ASSERT_THAT(bytes, SizeIs(28 + 10 + 65539 + 5 + 10));
    EXPECT_EQ(bytes[36] | bytes[37] << 8U, 65544 & 0xFFFF);
    EXPECT_EQ(bytes[28 + 10 + 65539 + 4], 'b');
    EXPECT_EQ(bytes[28 + 10 + 65539 + 5], 2);
}

TEST_F(TlvEncode, WritesHeaderAndRecordsWithTheSizeThatItsCallerSays)
{
    addRecord(3);
    std::vector<std::uint8_t> buffer(38);

    package.encode_i(buffer.data(), 1234);

    EXPECT_EQ(package.oHead.uiDataLen, 1234U);
    EXPECT_EQ(buffer[24] | buffer[25] << 8U, 1234);
    EXPECT_EQ(buffer[28], 3);
}

TEST_F(TlvEncode, LogsNothingOtherwise)
{
    addCell(addRecord(1), CTLVCell::TLV_STRING, 1, "ab");

    encoded();

    EXPECT_THAT(aceLog.lines, IsEmpty());
}

}  // namespace talvik::test
