#include "tests/support/codec_test.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace talvik::test {

/// The acceptance rule where it looks wrong: only the position at the end counts, and it has 16
/// bits.
class TlvAcceptance : public CodecTest {};

TEST_F(TlvAcceptance, OfARecordThatEndsRightBehindALengthThatIsTooLong)
{
    EXPECT_TRUE(accepts(WireBytes::record(1, WireBytes().cellHead(2, 1, 1))));

    ASSERT_EQ(package.oRecords.size(), 1U);
    EXPECT_THAT(*package[0]->pCells, IsEmpty());
    EXPECT_THAT(texts(), ElementsAre(recordLine(" : data length is too long, ((sDataLen + pos) > "
                                                "usRecordLen + MIN_RECORD_SIZE) ->1+14 > 4+10")));
}

TEST_F(TlvAcceptance, KeepsTheCellsBeforeSuchAStop)
{
    const auto stopped = WireBytes().cell(2, 1, "a").cell(2, 2, "b").cellHead(2, 3, 9);

    EXPECT_TRUE(accepts(WireBytes::record(1, stopped)));

    ASSERT_EQ(package.oRecords.size(), 1U);
    EXPECT_THAT(cells(*package[0]), ElementsAre("2:1=a", "2:2=b"));
    EXPECT_EQ(package[0]->oTagIndex.current_size(), 2U);
}

TEST_F(TlvAcceptance, EndsAtARecordLengthOf65525)
{
    EXPECT_TRUE(accepts(WireBytes::record(1, WireBytes().cellUpTo(65525))));

    ASSERT_EQ(package.oRecords.size(), 1U);
    EXPECT_EQ(package[0]->pCells->front()->sDataLen, 65521U);
    EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(TlvAcceptance, NeverHoldsForARecordLengthOf65526)
{
    EXPECT_FALSE(accepts(WireBytes::record(1, WireBytes().cellUpTo(65526))));

    EXPECT_EQ(texts().front(),
              recordLine(" : data length is too long, ((sDataLen + pos) > usRecordLen + "
                         "MIN_RECORD_SIZE) ->65522+14 > 65526+10"));
}

TEST_F(TlvAcceptance, NeverHoldsForTheLargestRecordLength)
{
    const auto small = WireBytes().cell(1, 1, "").cellUpTo(65535);

    EXPECT_FALSE(accepts(WireBytes::record(1, small)));

    EXPECT_EQ(texts().front(),
              recordLine(" : data length is too long, ((sDataLen + pos) > usRecordLen + "
                         "MIN_RECORD_SIZE) ->0+14 > 65535+10"));
}

/// Records whose last cell starts past 65531, with bytes behind the record: its header leaves the
/// 16 bits and the walk goes on at the record's own start. All cells but those placed by a test are
/// empty ones of type 0.
class TlvWrap : public CodecTest {
protected:
    static constexpr std::size_t kSize = 65540;

    /// A record whose first cell reaches to `last`.
    static WireBytes reaching(std::uint64_t id, std::uint16_t recordLen, std::uint16_t last)
    {
        return WireBytes()
            .u64(id)
            .u16(recordLen)
            .cellHead(1, 1, static_cast<std::uint16_t>(last - 14))
            .overwrite(kSize - 1, WireBytes().u8(0));
    }

    std::unique_ptr<CTLVRecordV3> get(const WireBytes& wire)
    {
        CTLVRecordV3* record = nullptr;
        const auto copy = wire.exactCopy();
        package.getRecord(copy.get(), static_cast<unsigned>(wire.size()), record);
        return std::unique_ptr<CTLVRecordV3>(record);
    }

    static std::vector<unsigned> lengths(const CTLVRecordV3& record)
    {
        std::vector<unsigned> found;
        for (const CTLVCell* cell : *record.pCells) {
            found.push_back(cell->sDataLen);
        }
        return found;
    }
};

TEST_F(TlvWrap, AcceptsACellThatComesRoundToTheRecordsEnd)
{
    const auto wire = reaching(0x0102030405060708, 65523, 65532)
                          .overwrite(65532, WireBytes().cellHead(1, 2, 65533));

    const auto record = get(wire);

    ASSERT_NE(record, nullptr);
    EXPECT_THAT(lengths(*record), ElementsAre(65518U, 65533U));
    EXPECT_EQ(CTLVCell::ValueCast<unsigned long long>()((*record)[2]), 0x0102030405060708U);
    EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(TlvWrap, WalksOnThroughTheRecordsOwnHeader)
{
    const auto wire = reaching(65529U << 16U | 7U << 4U | 1U, 65523, 65532)
                          .overwrite(65532, WireBytes().cellHead(1, 2, 0));

    const auto record = get(wire);

    ASSERT_NE(record, nullptr);
    EXPECT_THAT(lengths(*record), ElementsAre(65518U, 0U, 65529U));
    EXPECT_EQ((*record)[7], record->pCells->back());
}

TEST_F(TlvWrap, AcceptsAWalkThatWrapsAtAllThreePlaces)
{
    // 10 -> 65532 -> 0x64 -> 65533 -> 1 + 0x100 -> 65534 -> 65535; the last length field is the
    // record's own start.
    const auto wire = reaching(65533, 65525, 65532)
                          .overwrite(65532, WireBytes().u16(0x0010).u16(0x0064).u8(0x01))
                          .overwrite(0x64, WireBytes().cellHead(1, 2, 65533 - 0x68))
                          .overwrite(0x101, WireBytes().cellHead(1, 3, 65534 - 0x105));

    const auto record = get(wire);

    ASSERT_NE(record, nullptr);
    EXPECT_THAT(lengths(*record), ElementsAre(65518U, 0x64U, 65429U, 0x100U, 65273U, 65533U));
    EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(TlvWrap, RefusesAWalkThatEndsElsewhere)
{
    const auto wire = reaching(1, 65523, 65532).overwrite(65532, WireBytes().cellHead(1, 2, 65530));

    EXPECT_EQ(get(wire), nullptr);

    EXPECT_THAT(texts(), ElementsAre(recordLine(
                             " : data length is too long, ((sDataLen + pos) > usRecordLen + "
                             "MIN_RECORD_SIZE) ->33+65534 > 65523+10")));
}

TEST_F(TlvWrap, RefusesATagWordOfABadTypeAtTheVeryEnd)
{
    const auto wire = reaching(1, 65525, 65534).overwrite(65534, WireBytes().u16(0x000B));

    EXPECT_EQ(get(wire), nullptr);

    EXPECT_THAT(texts(), ElementsAre(recordLine(" : data type unmated, received type is 11")));
}

TEST_F(TlvWrap, NeedsBytesBehindTheRecord)
{
    const auto wire = reaching(1, 65523, 65532)
                          .overwrite(65532, WireBytes().cellHead(1, 2, 65533))
                          .truncateTo(65533);

    EXPECT_EQ(get(wire), nullptr);

    EXPECT_THAT(texts(), ElementsAre(recordLine(
                             " : (MIN_TLV_SIZE > uiBufSize - pos) ->4 < uiBufSize - 65532")));
}

struct EndlessRecord {
    const char* name;
    std::uint16_t recordLen;
    std::uint16_t last;    ///< where its last cell starts
    std::uint16_t length;  ///< of that cell

    friend std::ostream& operator<<(std::ostream& os, const EndlessRecord& row)
    {
        return os << row.name;
    }
};

class TlvEndlessRecord : public TlvWrap, public testing::WithParamInterface<EndlessRecord> {
protected:
    /// The length field of a last cell at 65534 is the low half of the record identifier.
    WireBytes endless() const
    {
        const auto& row = GetParam();
        auto wire = reaching(0, row.recordLen, row.last);
        if (row.last == 65534) {
            return wire.overwrite(0, WireBytes().u16(row.length));
        }
        return wire.overwrite(row.last + 2U, WireBytes().u16(row.length));
    }
};

TEST_P(TlvEndlessRecord, IsRefused)
{
    const auto wire = WireBytes::package(endless());

    EXPECT_EQ(decode(wire), kCodecFailed);

    EXPECT_THAT(
        texts(),
        ElementsAre(recordLine(" : cells never end, pos wraps for more than 3 times, (usRecordLen, "
                               "pos) ->" +
                               std::to_string(GetParam().recordLen) + ", " +
                               std::to_string(GetParam().last)),
                    recordFailedLine(wire.size(), 28)));
    EXPECT_THAT(package.oRecords, IsEmpty());
}

TEST_P(TlvEndlessRecord, AllocatesNoCell)
{
    host.calls.clear();

    EXPECT_EQ(get(endless()), nullptr);

    EXPECT_THAT(host.calls, IsEmpty());
}

const EndlessRecord kEndlessRecords[] = {
    {"BackToTheFirstCellIn65523", 65523, 65532, 10}, {"BackToTheFirstCellIn65524", 65524, 65533, 9},
    {"BackToTheFirstCellIn65525", 65525, 65534, 8},  {"BackToItselfIn65523", 65523, 65532, 65532},
    {"BackToItselfIn65524", 65524, 65533, 65532},    {"BackToItselfIn65525", 65525, 65534, 65532},
    {"FirstPlaceIn65525", 65525, 65532, 10},         {"SecondPlaceIn65525", 65525, 65533, 9},
};

INSTANTIATE_TEST_SUITE_P(Wire, TlvEndlessRecord, testing::ValuesIn(kEndlessRecords),
                         [](const auto& row) { return row.param.name; });

}  // namespace talvik::test
