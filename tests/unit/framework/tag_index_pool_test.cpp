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

TEST(TagIndexMemory, ServesTableAndEntriesFromDistinctBlocks)
{
    constexpr std::size_t kTable = 32 * sizeof(CTLVRecordV3::TagIndex::value_type);
    ACE_Allocator* memory = obtainTagIndexMemory(32);
    char* table = static_cast<char*>(memory->malloc(kTable));
    std::memset(table, 0x5A, kTable);
    std::set<void*> entries;

    for (int i = 0; i < 100; ++i) {
        void* entry = memory->malloc(sizeof(CTLVRecordV3::TagIndex::value_type));
        ASSERT_NE(entry, nullptr);
        std::memset(entry, i, sizeof(CTLVRecordV3::TagIndex::value_type));
        entries.insert(entry);
    }

    EXPECT_EQ(entries.size(), 100U);
    EXPECT_TRUE(std::all_of(table, table + kTable, [](char byte) { return byte == 0x5A; }));
    for (void* entry : entries) {
        memory->free(entry);
    }
    memory->free(table);
}

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
