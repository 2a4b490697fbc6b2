#include "framework/tag_index_pool.h"

#include "framework/tlv_record.h"
#include "tests/support/allocation_probe.h"

#include <ace/Malloc_Base.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <queue>
#include <set>
#include <thread>
#include <vector>

namespace talvik::test {

namespace {

using Record = std::unique_ptr<CTLVRecordV3>;

Record filledRecord(std::size_t cells)
{
    auto record = std::make_unique<CTLVRecordV3>(cells, cells);
    for (std::size_t tag = 0; tag < cells; ++tag) {
        record->pCells->push_back(new CTLVCell);
        record->oTagIndex.bind(static_cast<int>(tag), std::prev(record->pCells->end()));
    }
    return record;
}

bool findsAll(const CTLVRecordV3& record)
{
    std::size_t tag = 0;
    for (auto place = record.pCells->begin(); place != record.pCells->end(); ++place, ++tag) {
        if (record.find(static_cast<unsigned short>(tag)) != place) {
            return false;
        }
    }
    return tag == record.ullRecordId;
}

}  // namespace

class TagIndexBlocks : public testing::TestWithParam<std::size_t> {};

TEST_P(TagIndexBlocks, AreDistinctForTableAndEntries)
{
    constexpr std::size_t kEntry = sizeof(CTLVRecordV3::TagIndex::value_type);
    const std::size_t tableSize = GetParam() * kEntry;
    ACE_Allocator* memory = obtainTagIndexMemory(GetParam());
    char* table = static_cast<char*>(memory->malloc(tableSize));
    std::memset(table, 0x5A, tableSize);
    std::set<void*> entries;

    for (std::size_t i = 0; i < GetParam() + 68; ++i) {
        void* entry = memory->malloc(kEntry);
        ASSERT_NE(entry, nullptr);
        std::memset(entry, 0xA5, kEntry);
        entries.insert(entry);
    }

    EXPECT_EQ(entries.size(), GetParam() + 68);
    EXPECT_TRUE(std::all_of(table, table + tableSize, [](char byte) { return byte == 0x5A; }));
    for (void* entry : entries) {
        memory->free(entry);
    }
    memory->free(table);
}

INSTANTIATE_TEST_SUITE_P(Buckets, TagIndexBlocks, testing::Values(32U, 33U, 4000U));

TEST(TagIndexMemory, HoldsMoreCellsThanTheRecordWasMadeFor)
{
    auto record = filledRecord(12);
    for (int tag = 12; tag < 200; ++tag) {
        record->pCells->push_back(new CTLVCell);
        record->oTagIndex.bind(tag, std::prev(record->pCells->end()));
    }
    record->ullRecordId = 200;

    EXPECT_TRUE(findsAll(*record));
}

TEST(TagIndexMemory, ServesARecordThatIsClearedAndFilledAgain)
{
    auto record = filledRecord(12);
    for (int round = 0; round < 100; ++round) {
        record->clear();
        for (int tag = 0; tag < 12; ++tag) {
            record->pCells->push_back(new CTLVCell);
            record->oTagIndex.bind(tag, std::prev(record->pCells->end()));
        }
        ASSERT_TRUE(findsAll(*record));
    }
}

TEST(TagIndexMemory, TakesEntriesFromItsBlockAgainAfterAClear)
{
    if (!kTagIndexPooling) {
        GTEST_SKIP() << "entries come from the heap in this build";
    }
    auto record = filledRecord(32);
    record->clear();
    record->pCells->push_back(new CTLVCell);
    const AllocationProbe probe;

    for (int tag = 0; tag < 32; ++tag) {
        record->oTagIndex.bind(tag, record->pCells->begin());
    }

    EXPECT_EQ(probe.allocations(), 0U);
}

TEST(TagIndexMemory, ServesSingleEntriesThatComeAndGo)
{
    auto record = filledRecord(12);
    for (int round = 0; round < 100; ++round) {
        ASSERT_EQ(record->oTagIndex.unbind(round % 12), 0);
        ASSERT_EQ(
            record->oTagIndex.bind(round % 12, std::next(record->pCells->begin(), round % 12)), 0);
        ASSERT_TRUE(findsAll(*record));
    }
}

TEST(TagIndexPool, KeepsNoMoreThanItsBlocks)
{
    const AllocationProbe probe;
    {
        std::vector<Record> records;
        for (std::size_t i = 0; i < kPooledTagIndexes + 44; ++i) {
            records.push_back(filledRecord(i % 40));
        }
        for (const Record& record : records) {
            ASSERT_TRUE(findsAll(*record));
        }
    }
    EXPECT_EQ(probe.live(), 0);
}

TEST(TagIndexPool, SparesTheHeapUntilItsBlocksAreInUse)
{
    if (!kTagIndexPooling) {
        GTEST_SKIP() << "indexes come from the heap in this build";
    }
    constexpr std::size_t kTable = 32 * sizeof(CTLVRecordV3::TagIndex::value_type);
    std::vector<Record> records;
    records.reserve(kPooledTagIndexes + 1);
    const AllocationProbe probe;

    for (std::size_t i = 0; i < kPooledTagIndexes; ++i) {
        records.push_back(filledRecord(1));
    }
    EXPECT_LT(probe.largest(), kTable);
    records.push_back(filledRecord(1));

    EXPECT_GT(probe.largest(), kTable);
}

TEST(TagIndexPool, SurvivesWhateverAllocationFails)
{
    bool failed = true;
    for (std::size_t count = 0; failed; ++count) {
        AllocationProbe probe;
        probe.failAfter(count);
        try {
            std::make_unique<CTLVRecordV3>(1, 64);
        } catch (const std::bad_alloc&) {
        }
        failed = probe.failed();
        EXPECT_EQ(probe.live(), 0);
    }
}

/// Threads that make records and hand every other one to whoever comes next to free it.
class RecordExchange {
public:
    void run(std::size_t rounds)
    {
        for (std::size_t round = 0; round < rounds; ++round) {
            Record record = filledRecord(round % 37);
            if (round % 2 == 0) {
                record = swap(std::move(record));
            }
            if (record != nullptr && !findsAll(*record)) {
                ++broken;
            }
        }
    }

    std::atomic<unsigned> broken{0};

private:
    Record swap(Record record)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        waiting_.push(std::move(record));
        if (waiting_.size() < 40) {
            return nullptr;
        }
        Record other = std::move(waiting_.front());
        waiting_.pop();
        return other;
    }

    std::mutex mutex_;
    std::queue<Record> waiting_;  // under mutex_
};

TEST(TagIndexPool, ServesEightThreadsThatHandRecordsToEachOther)
{
    RecordExchange exchange;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&exchange] { exchange.run(5000); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(exchange.broken, 0U);
}

}  // namespace talvik::test
