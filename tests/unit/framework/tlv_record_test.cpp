#include "framework/tlv_record.h"

#include "tests/support/allocation_probe.h"
#include "tests/support/fake_host_test.h"
#include "tests/support/throw_text.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <memory>
#include <new>
#include <string>

namespace {

class TlvRecord : public talvik::test::FakeHostTest {
protected:
    CTLVCell* append(unsigned short tag, const char* text)
    {
        auto cell = std::make_unique<CTLVCell>();
        cell->set(tag, text);
        record.append(cell.get());
        return cell.release();
    }

    CTLVRecordV3 record;
};

TEST_F(TlvRecord, IsMadeWithAllIdentifierBitsSetAndNoCells)
{
    EXPECT_EQ(record.ullRecordId, 0xFFFFFFFFFFFFFFFFULL);
    EXPECT_TRUE(record.pCells->empty());
    EXPECT_EQ(record.length(), 0U);
}

TEST_F(TlvRecord, HasThirtyTwoBucketsUnlessMoreCellsAreExpected)
{
    EXPECT_EQ(CTLVRecordV3(1, 0).oTagIndex.total_size(), 32U);
    EXPECT_EQ(CTLVRecordV3(1, 32).oTagIndex.total_size(), 32U);
    EXPECT_EQ(CTLVRecordV3(1, 33).oTagIndex.total_size(), 33U);
}

TEST_F(TlvRecord, FindsACellByItsTag)
{
    append(1, "one");
    auto* second = append(33, "same bucket as tag 1");
    append(65, "and again");

    const auto place = record.find(33);

    ASSERT_NE(place, record.pCells->end());
    EXPECT_EQ(*place, second);
    EXPECT_EQ(std::distance(record.pCells->begin(), place), 1);
    EXPECT_EQ(record[33], second);
}

TEST_F(TlvRecord, FindOfAnAbsentTagIsTheEndWithEnoent)
{
    append(1, "one");
    errno = 0;

    EXPECT_EQ(record.find(33), record.pCells->end());
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(TlvRecord, FindInAnIndexWithoutBucketsIsTheEnd)
{
    append(1, "one");
    record.oTagIndex.close();
    errno = 0;

    EXPECT_EQ(record.find(1), record.pCells->end());
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(TlvRecord, ATagThatComesTwiceIsFoundAtItsFirstPlace)
{
    auto* first = append(7, "first");
    append(7, "second");

    EXPECT_EQ(*record.find(7), first);
    EXPECT_EQ(record.pCells->size(), 2U);
}

/// A record whose index has used up the entries of its own block, where those are pooled: each
/// further cell takes one allocation for its place in the list and one for its entry.
class TlvFullRecord : public TlvRecord {
protected:
    TlvFullRecord()
    {
        host.recording = false;
        for (unsigned short tag = 0; tag < CTLVRecordV3::MIN_BUCKETS; ++tag) {
            append(tag, "held");
        }
        cell->set(32, "mine");
    }

    ~TlvFullRecord() override
    {
        const auto& held = *record.pCells;
        if (std::find(held.begin(), held.end(), cell.get()) != held.end()) {
            cell.release();  // kept against the rule: the test failed, and need not crash as well
        }
    }

    void expectUnchanged() const
    {
        EXPECT_EQ(record.pCells->size(), CTLVRecordV3::MIN_BUCKETS);
        EXPECT_EQ(record.oTagIndex.current_size(), CTLVRecordV3::MIN_BUCKETS);
        EXPECT_EQ(record.pCells->back(), record[31]);
        EXPECT_EQ(record.find(32), record.pCells->end());
        EXPECT_EQ(cell->usTagWord, 32 << 4 | 2);
        EXPECT_STREQ(reinterpret_cast<const char*>(cell->pData), "mine");
    }

    std::unique_ptr<CTLVCell> cell = std::make_unique<CTLVCell>();
};

TEST_F(TlvFullRecord, WithoutMemoryForTheIndexEntryTakesTheCellOffItsListAgain)
{
    talvik::test::AllocationProbe probe;
    probe.failAfter(1);

    EXPECT_THROW(record.append(cell.get()), std::bad_alloc);

    EXPECT_TRUE(probe.failed());
    EXPECT_EQ(probe.allocations(), 1U);
    EXPECT_EQ(probe.live(), 0);
    expectUnchanged();
}

TEST_F(TlvFullRecord, WithoutMemoryForThePlaceInTheListIsUnchanged)
{
    talvik::test::AllocationProbe probe;
    probe.failAfter(0);

    EXPECT_THROW(record.append(cell.get()), std::bad_alloc);

    EXPECT_EQ(probe.live(), 0);
    expectUnchanged();
}

TEST_F(TlvFullRecord, TakesTheCellOnceThereIsMemoryAgain)
{
    {
        talvik::test::AllocationProbe probe;
        probe.failAfter(1);
        EXPECT_THROW(record.append(cell.get()), std::bad_alloc);
    }

    auto* added = append(32, "again");

    EXPECT_EQ(record[32], added);
    EXPECT_EQ(record.pCells->size(), CTLVRecordV3::MIN_BUCKETS + 1);
}

TEST_F(TlvRecord, LookUpOfAnAbsentTagThrows)
{
    EXPECT_EQ(talvik::test::textOfThrown([this] { record[9]; }),
              "CKEL_Exception: CTLVRecordV3 has no such cell! tag equal to 9");
}

TEST_F(TlvRecord, LengthCountsFourBytesACell)
{
    append(1, "abc");
    append(2, nullptr);

    EXPECT_EQ(record.length(), 4U + 4U + 4U);
}

TEST_F(TlvRecord, ClearDropsCellsAndKeepsTheIdentifier)
{
    record.ullRecordId = 42;
    append(1, "one");
    record.clear();

    EXPECT_TRUE(record.pCells->empty());
    EXPECT_EQ(record.find(1), record.pCells->end());
    EXPECT_EQ(record.ullRecordId, 42U);
    append(1, "again");
    EXPECT_EQ(record[1]->toString(), "again");
}

TEST_F(TlvRecord, DumpShowsIdentifierAndCells)
{
    record.ullRecordId = 42;
    append(5, "text");
    std::ostringstream os;

    record.dump(os);

    EXPECT_EQ(os.str(), "  record id=42 length=9\n    tag=5 type=2 length=5 value=text\n");
}

}  // namespace
