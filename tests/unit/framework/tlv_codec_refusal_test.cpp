#include "tests/support/codec_test.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace talvik::test {

namespace {

const std::string kInvalidHeader = "invalid MSG header!\n";
const std::string kShortHeader = std::string("at File=") + kSource +
                                 ",Line=N,Function=CTLVPackageV3::verifyMsgHead: pBuf is null or "
                                 "uiBufSize equal zero!\n";

}  // namespace

struct HeaderRefusal {
    const char* name;
    WireBytes wire;
    std::vector<std::string> lines;

    friend std::ostream& operator<<(std::ostream& os, const HeaderRefusal& row)
    {
        return os << row.name;
    }
};

class TlvHeaderRefusal : public CodecTest, public testing::WithParamInterface<HeaderRefusal> {};

TEST_P(TlvHeaderRefusal, IsLoggedAndLeavesThePackageAsItWas)
{
    ASSERT_TRUE(accepts(WireBytes::record(1, {})));
    package.oHead.uiWord2 = 5;
    const auto before = headerBytes();

    EXPECT_EQ(decode(GetParam().wire), kCodecFailed);

    EXPECT_EQ(texts(), GetParam().lines);
    EXPECT_EQ(package.oRecords.size(), 1U);
    EXPECT_EQ(headerBytes(), before);
}

const HeaderRefusal kHeaderRefusals[] = {
    {"NoByte", WireBytes(), {kShortHeader, kInvalidHeader}},
    {"OneByte", WireBytes().u8(0x55), {kShortHeader, kInvalidHeader}},
    {"OneByteShort", WireBytes::header(0).truncateTo(27), {kShortHeader, kInvalidHeader}},
    {"WrongMagic", WireBytes::header(0x55555554, 3, 0), {kInvalidHeader}},
    {"WrongVersion", WireBytes::header(0x55555555, 2, 0), {kInvalidHeader}},
    {"MoreAnnouncedThanThere", WireBytes::header(11).fill(10), {kInvalidHeader}},
    {"AnnouncedSizeThatWrapsWithTheHeader",
     WireBytes::header(0xFFFFFFE4).fill(10),
     {kInvalidHeader}},
    {"AnnouncedSizeThatWrapsToAHeader", WireBytes::header(0xFFFFFFFF).fill(10), {kInvalidHeader}},
};

INSTANTIATE_TEST_SUITE_P(Wire, TlvHeaderRefusal, testing::ValuesIn(kHeaderRefusals),
                         [](const auto& row) { return row.param.name; });

class TlvRefusal : public CodecTest {};

TEST_F(TlvRefusal, OfANullBufferIsLoggedTwice)
{
    ASSERT_TRUE(accepts(WireBytes::record(7, WireBytes().cell(2, 1, "held"))));
    CTLVRecordV3* const held = package[0];
    package.oHead = {};
    package.oHead.uiMagic = 1;
    package.oHead.uiVersion = 2;
    package.oHead.uiWord2 = 3;
    package.oHead.uiWord3 = 4;
    package.oHead.usShort0 = 5;
    package.oHead.usShort1 = 6;
    package.oHead.usShort2 = 7;
    package.oHead.usShort3 = 8;
    package.oHead.uiDataLen = 9;
    const auto before = headerBytes();

    EXPECT_EQ(package.decode(nullptr, 100), kCodecFailed);

    EXPECT_THAT(texts(), ElementsAre(kShortHeader, kInvalidHeader));
    ASSERT_THAT(package.oRecords, ElementsAre(held));
    EXPECT_EQ(held->ullRecordId, 7U);
    EXPECT_THAT(cells(*held), ElementsAre("2:1=held"));
    EXPECT_EQ(headerBytes(), before);
}

TEST_F(TlvRefusal, NamesTheThreadThatLogs)
{
    package.decode(nullptr, 0);

    char thread[32];
    std::snprintf(thread, sizeof thread, "(%ld)", static_cast<long>(ACE_OS::thr_gettid()));
    EXPECT_THAT(aceLog.lines, testing::Each(testing::HasSubstr(thread)));
}

struct RecordRefusal {
    const char* name;
    WireBytes records;
    std::vector<std::string> texts;  ///< of getRecord
    std::size_t position;            ///< where decode says that the record begins

    friend std::ostream& operator<<(std::ostream& os, const RecordRefusal& row)
    {
        return os << row.name;
    }
};

class TlvRecordRefusal : public CodecTest, public testing::WithParamInterface<RecordRefusal> {};

TEST_P(TlvRecordRefusal, IsLoggedWithTheValuesThatDecidedIt)
{
    const auto wire = WireBytes::package(GetParam().records);

    EXPECT_EQ(decode(wire), kCodecFailed);

    std::vector<std::string> expected;
    for (const std::string& text : GetParam().texts) {
        expected.push_back(recordLine(text));
    }
    expected.push_back(recordFailedLine(wire.size(), GetParam().position));
    EXPECT_EQ(texts(), expected);
    EXPECT_THAT(package.oRecords, IsEmpty());
}

const RecordRefusal kRecordRefusals[] = {
    {"RecordLongerThanTheRest",
     WireBytes().u64(1).u16(6).fill(5),
     {" : record length is too long, (usRecordLen + MIN_RECORD_SIZE) > uiBufSize ->6+10 < 15"},
     28},
    {"SecondRecordLongerThanTheRest",
     WireBytes::record(1, {}).u64(1).u16(65535),
     {" : record length is too long, (usRecordLen + MIN_RECORD_SIZE) > uiBufSize ->65535+10 < 10"},
     38},
    {"ThreeBytesOfACell",
     WireBytes::record(1, WireBytes().fill(3)),
     {" : (MIN_TLV_SIZE > uiBufSize - pos) ->4 < uiBufSize - 10"},
     28},
    {"OneByteBehindACell",
     WireBytes::record(1, WireBytes().cell(2, 1, "ab").u8(0)),
     {" : (MIN_TLV_SIZE > uiBufSize - pos) ->4 < uiBufSize - 16"},
     28},
    {"TypeFifteenBehindAGoodCell",
     WireBytes::record(1, WireBytes().cell(2, 1, "ab").cell(15, 1, "abc")),
     {" : data type unmated, received type is 15"},
     28},
    {"ValueOneByteTooLong",
     WireBytes::record(1, WireBytes().cellHead(2, 1, 3).fill(2)),
     {" : data length is too long, ((sDataLen + pos) > usRecordLen + MIN_RECORD_SIZE) ->3+14 > "
      "6+10"},
     28},
    {"ValueThatWouldReachTheNextRecord",
     WireBytes::record(1, WireBytes().cellHead(2, 1, 65535).fill(2))
         .append(WireBytes::record(2, {})),
     {" : data length is too long, ((sDataLen + pos) > usRecordLen + MIN_RECORD_SIZE) ->65535+14 > "
      "6+10"},
     28},
    {"CellHeaderAcrossTheRecordsEnd",
     WireBytes::record(1, WireBytes().fill(2)).append(WireBytes::record(2, {})),
     {" : data length is too long, ((sDataLen + pos) > usRecordLen + MIN_RECORD_SIZE) ->2+14 > "
      "2+10"},
     28},
};

INSTANTIATE_TEST_SUITE_P(Wire, TlvRecordRefusal, testing::ValuesIn(kRecordRefusals),
                         [](const auto& row) { return row.param.name; });

/// The type codes that no cell may have.
class TlvUnknownType : public CodecTest, public testing::WithParamInterface<unsigned> {
protected:
    std::string typeLine() const
    {
        return recordLine(" : data type unmated, received type is " + std::to_string(GetParam()));
    }
};

TEST_P(TlvUnknownType, IsRefused)
{
    const auto wire = WireBytes::package(WireBytes::record(1, WireBytes().cell(GetParam(), 1, "")));

    EXPECT_EQ(decode(wire), kCodecFailed);

    EXPECT_THAT(texts(), ElementsAre(typeLine(), recordFailedLine(wire.size(), 28)));
    EXPECT_THAT(package.oRecords, IsEmpty());
}

TEST_P(TlvUnknownType, IsAcceptedRightBehindTheTagWordAtTheRecordsEnd)
{
    const auto tagWord = static_cast<std::uint16_t>(1U << 4U | GetParam());
    const auto records = WireBytes::record(1, WireBytes().cell(2, 3, "kept").u16(tagWord))
                             .append(WireBytes::record(2, {}));

    EXPECT_TRUE(accepts(records));

    ASSERT_EQ(package.oRecords.size(), 2U);
    EXPECT_THAT(cells(*package[0]), ElementsAre("2:3=kept"));
    EXPECT_EQ(package[1]->ullRecordId, 2U);
    EXPECT_THAT(texts(), ElementsAre(typeLine()));
}

INSTANTIATE_TEST_SUITE_P(Codes, TlvUnknownType, testing::Range(10U, 16U));

class TlvRemainder : public CodecTest, public testing::WithParamInterface<unsigned> {};

TEST_P(TlvRemainder, BelowARecordHeaderIsRefusedAtOnce)
{
    const auto wire = WireBytes::header(GetParam()).fill(GetParam());

    EXPECT_EQ(decode(wire), kCodecFailed);

    EXPECT_THAT(texts(), ElementsAre(std::string("at File=") + kSource +
                                     ",Line=N: MIN_RECORD_SIZE(10) > uiRemainLen, buf size=" +
                                     std::to_string(wire.size()) + ", parsing pos=28\n"));
    EXPECT_THAT(package.oRecords, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Bytes, TlvRemainder, testing::Range(1U, 10U));

TEST_F(TlvRefusal, OfARemainderNamesItsPlaceInTheBuffer)
{
    const auto wire =
        WireBytes::package(WireBytes::record(1, WireBytes().cell(2, 1, "ab")).fill(9));

    EXPECT_EQ(decode(wire), kCodecFailed);

    EXPECT_THAT(texts(), ElementsAre(std::string("at File=") + kSource +
                                     ",Line=N: MIN_RECORD_SIZE(10) > uiRemainLen, "
                                     "buf size=53, parsing pos=44\n"));
    EXPECT_THAT(package.oRecords, IsEmpty());
}

}  // namespace talvik::test
