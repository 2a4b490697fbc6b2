#include "backend/alarm_store.h"

#include "host/platform/durable_database.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/alarm_kit.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <gmock/gmock.h>

#include <set>
#include <thread>

namespace {

using namespace talvik::test;
using namespace talvik::backend;
using talvik::DurableDatabase;
using talvik::SqliteDatabase;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class AlarmStoreTest : public testing::Test {
protected:
    std::string file() const { return dir_.path("alarms.db"); }

    /// The history's `column`, oldest first; nobody may have the store open.
    std::string historyOf(const std::string& column) const
    {
        SqliteDatabase database(file(), 1000);
        const auto sql = "SELECT group_concat(" + column + ") FROM history ORDER BY position";
        return database.text(sql.c_str());
    }

    TempDir dir_;
};

using InMemory = AlarmStore;

TEST_F(AlarmStoreTest, GivesAscendingSerialNumbersAcrossRestarts)
{
    std::vector<std::uint32_t> given;
    for (int start = 0; start < 3; ++start) {
        AlarmStore store(file());
        given.push_back(store.raise(alarmOf(1)).serial);
        given.push_back(store.reportEvent(alarmOf(2)).serial);
    }

    EXPECT_THAT(given, ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_THAT(serialsOf(AlarmStore(file())), ElementsAre(1, 3, 5));
}

TEST_F(AlarmStoreTest, GivesNoSerialNumberTwiceWhenNothingIsLeftOfIt)
{
    StoreLimits limits;
    limits.history = 0;
    {
        AlarmStore store(file(), limits);
        const auto serial = store.raise(alarmOf(1)).serial;
        ASSERT_EQ(store.clear(serial, "me", 2000), result::kSuccess);
        ASSERT_TRUE(store.acknowledge(store.nextNotifications(0, 9, 9999).back().sequence));
    }

    EXPECT_EQ(AlarmStore(file(), limits).raise(alarmOf(1)).serial, 2U);
}

TEST_F(AlarmStoreTest, KeepsARecordOfEachChangeInItsOrder)
{
    {
        AlarmStore store(file());
        store.raise(alarmOf(0xF00C900B6));
        store.reportEvent(alarmOf(7, ""));
        store.clear(1, "operator", 5000);
    }

    EXPECT_THAT(outboxOf(AlarmStore(file())),
                ElementsAre(alarmRecordOf(1, 1, alarmOf(0xF00C900B6)).octets(),
                            alarmRecordOf(2, 2, alarmOf(7, "")).octets(),
                            alarmRecordOf(8, 1, alarmOf(0xF00C900B6), 5000).octets()));
}

TEST_F(AlarmStoreTest, KeepsTheLargestValuesAndAnyOctets)
{
    Alarm alarm{~std::uint64_t{0}, 0xFFFFFFFF, 253402300799, std::string(32768, '\xFF')};
    AlarmStore(file()).raise(alarm);

    AlarmStore store(file());

    const auto page = store.pageOfActive(0, 1, 1).alarms;
    ASSERT_EQ(page.size(), 1U);
    EXPECT_EQ(page[0].alarm.id, alarm.id);
    EXPECT_EQ(page[0].alarm.level, alarm.level);
    EXPECT_EQ(page[0].alarm.time, alarm.time);
    EXPECT_EQ(page[0].alarm.parameters, alarm.parameters);
    EXPECT_THAT(outboxOf(store), ElementsAre(faultOf(1, alarm).octets()));
}

TEST(AlarmStore, ClearsOnce)
{
    InMemory store(DurableDatabase::kInMemory);
    store.raise(alarmOf(1));

    EXPECT_EQ(store.clear(1, "me", 2000), result::kSuccess);

    EXPECT_EQ(store.clear(1, "me", 2001), result::kNoSuchAlarm);
    EXPECT_EQ(store.clear(2, "me", 2001), result::kNoSuchAlarm);
    EXPECT_EQ(store.countActive(), 0U);
    EXPECT_THAT(serialsOf(store), IsEmpty());
    EXPECT_EQ(outboxOf(store).size(), 2U);
}

TEST(AlarmStore, NeverMakesAnEventActive)
{
    InMemory store(DurableDatabase::kInMemory);

    const auto serial = store.reportEvent(alarmOf(1)).serial;

    EXPECT_EQ(store.countActive(), 0U);
    EXPECT_EQ(store.clear(serial, "me", 2000), result::kNoSuchAlarm);
}

TEST(AlarmStore, ReadsActiveAlarmsInPages)
{
    InMemory store(DurableDatabase::kInMemory);
    for (std::uint64_t id = 1; id <= 5; ++id) {
        store.raise(alarmOf(id));
    }
    store.clear(3, "me", 2000);

    const auto page = store.pageOfActive(1, 2, 9999);

    ASSERT_EQ(page.alarms.size(), 2U);
    EXPECT_FALSE(page.isLast);
    EXPECT_EQ(page.alarms[0].serial, 2U);
    EXPECT_EQ(page.alarms[1].serial, 4U);
    EXPECT_EQ(page.alarms[1].alarm.id, 4U);
    EXPECT_EQ(page.alarms[1].alarm.parameters, "CTE0,B");
    const auto none = store.pageOfActive(5, 2, 9999);
    EXPECT_THAT(none.alarms, IsEmpty());
    EXPECT_TRUE(none.isLast);
    EXPECT_EQ(store.countActive(), 4U);
    EXPECT_EQ(store.lastSerial(), 5U);
}

TEST(AlarmStore, EndsAPageOfActiveAlarmsAtTheOctetsOfTheirParameters)
{
    InMemory store(DurableDatabase::kInMemory);
    for (std::uint64_t id = 1; id <= 4; ++id) {
        store.raise(alarmOf(id, "12345"));
    }
    const auto sizeWithin = [&store](std::size_t octets) {
        return store.pageOfActive(0, 9, octets).alarms.size();
    };

    EXPECT_EQ(sizeWithin(0), 0U);
    EXPECT_EQ(sizeWithin(1), 1U);
    EXPECT_EQ(sizeWithin(5), 1U);
    EXPECT_EQ(sizeWithin(6), 2U);
    EXPECT_FALSE(store.pageOfActive(0, 9, 15).isLast);
    EXPECT_TRUE(store.pageOfActive(0, 9, 16).isLast);
    EXPECT_TRUE(store.pageOfActive(1, 9, 15).isLast) << "none was left out";
}

TEST(AlarmStore, ReadsTheOutboxInPagesOfRowsOrOctets)
{
    InMemory store(DurableDatabase::kInMemory);
    for (std::uint64_t id = 1; id <= 5; ++id) {
        store.raise(alarmOf(id));
    }
    const auto size = outboxOf(store).front().size();

    EXPECT_EQ(store.nextNotifications(0, 3, 9999).size(), 3U);
    EXPECT_EQ(store.nextNotifications(0, 9, 2 * size).size(), 2U);
    EXPECT_EQ(store.nextNotifications(0, 9, 2 * size + 1).size(), 3U);
    EXPECT_EQ(store.nextNotifications(3, 9, 9999).front().record, faultOf(4, alarmOf(4)).octets());
}

TEST_F(AlarmStoreTest, RemovesWhatIsAcknowledgedAndAllBeforeIt)
{
    {
        AlarmStore store(file());
        for (std::uint64_t id = 1; id <= 4; ++id) {
            store.raise(alarmOf(id));
        }
        EXPECT_TRUE(store.acknowledge(store.nextNotifications(0, 9, 9999)[1].sequence));
        EXPECT_TRUE(store.acknowledge(1));  // once more
    }

    EXPECT_THAT(outboxOf(AlarmStore(file())),
                ElementsAre(faultOf(3, alarmOf(3)).octets(), faultOf(4, alarmOf(4)).octets()));
}

TEST(AlarmStore, GivesNoSequenceTwice)
{
    InMemory store(DurableDatabase::kInMemory);
    store.raise(alarmOf(1));
    const auto first = store.nextNotifications(0, 9, 9999).front().sequence;
    store.acknowledge(first);

    store.raise(alarmOf(2));

    EXPECT_GT(store.nextNotifications(0, 9, 9999).front().sequence, first);
    EXPECT_EQ(store.nextNotifications(first, 9, 9999).size(), 1U);
}

TEST_F(AlarmStoreTest, RefusesMoreThanTheOutboxTakesUntilTheHostAcknowledges)
{
    const LoggerCapture log("backend");
    StoreLimits limits;
    limits.outbox = 3;
    {
        AlarmStore store(file(), limits);
        store.raise(alarmOf(1));
        store.raise(alarmOf(2));
    }
    AlarmStore store(file(), limits);
    EXPECT_EQ(store.reportEvent(alarmOf(3)).code, result::kSuccess);

    EXPECT_EQ(store.raise(alarmOf(4)).code, result::kOutboxFull);
    EXPECT_EQ(store.reportEvent(alarmOf(4)).code, result::kOutboxFull);
    EXPECT_EQ(store.clear(1, "me", 2000), result::kOutboxFull);
    EXPECT_EQ(store.clear(9, "me", 2000), result::kNoSuchAlarm);
    EXPECT_THAT(serialsOf(store), ElementsAre(1, 2));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("3 notifications wait in " + file())));

    store.acknowledge(store.nextNotifications(0, 1, 9999).front().sequence);
    EXPECT_EQ(store.clear(1, "me", 2000), result::kSuccess);
    EXPECT_EQ(store.raise(alarmOf(5)).code, result::kOutboxFull);
    EXPECT_EQ(store.lastSerial(), 3U);
    EXPECT_EQ(log.lines().size(), 2U);
}

TEST_F(AlarmStoreTest, KeepsTheLatestOfItsHistory)
{
    StoreLimits limits;
    limits.history = 3;
    for (int start = 0; start < 2; ++start) {
        AlarmStore store(file(), limits);
        const auto first = store.raise(alarmOf(1)).serial;
        store.raise(alarmOf(2));
        store.reportEvent(alarmOf(3));
        store.clear(first, "operator", 2000);
    }

    EXPECT_EQ(historyOf("serial"), "1,6,4");
    EXPECT_EQ(historyOf("kind"), "1,2,1");
    EXPECT_EQ(historyOf("clear_time"), "2000,0,2000");
    EXPECT_EQ(historyOf("requester"), "operator,,operator");
}

TEST_F(AlarmStoreTest, KeepsNoMoreTextsInItsHistoryThanTheLimit)
{
    StoreLimits limits;
    limits.historyOctets = 100;
    for (int start = 0; start < 2; ++start) {
        AlarmStore store(file(), limits);
        store.reportEvent(alarmOf(1, std::string(40, 'x')));
        store.reportEvent(alarmOf(2, std::string(40, 'x')));
        store.reportEvent(alarmOf(3, std::string(20, 'x')));
    }

    EXPECT_EQ(historyOf("serial"), "4,5,6");
}

TEST_F(AlarmStoreTest, KeepsNothingInItsHistoryThatAloneIsTooLong)
{
    StoreLimits limits;
    limits.historyOctets = 100;
    {
        AlarmStore store(file(), limits);
        store.reportEvent(alarmOf(1));
        EXPECT_EQ(store.reportEvent(alarmOf(2, std::string(101, 'x'))).code, result::kSuccess);
    }

    EXPECT_EQ(historyOf("serial"), "");
}

TEST(AlarmStore, RefusesWhenTheSerialNumbersAreUsedUp)
{
    const LoggerCapture log("backend");
    StoreLimits limits;
    limits.lastSerial = 2;
    InMemory store(DurableDatabase::kInMemory, limits);
    store.raise(alarmOf(1));
    EXPECT_EQ(store.raise(alarmOf(1)).serial, 2U);

    EXPECT_EQ(store.raise(alarmOf(1)).code, result::kStoreFailed);

    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("used up")));
    EXPECT_EQ(store.clear(1, "me", 2000), result::kSuccess);
}

TEST(AlarmStore, SaysWhenTheOutboxHasGrown)
{
    InMemory store(DurableDatabase::kInMemory);
    int calls = 0;
    store.onChange([&] {
        ++calls;
        EXPECT_EQ(outboxOf(store).size(), static_cast<std::size_t>(calls)) << "not committed yet";
    });

    store.raise(alarmOf(1));
    EXPECT_EQ(calls, 1);
    store.reportEvent(alarmOf(2));
    EXPECT_EQ(calls, 2);
    store.clear(1, "me", 2000);
    EXPECT_EQ(calls, 3);
    store.clear(1, "me", 2000);
    store.acknowledge(1);
    EXPECT_EQ(calls, 3);
}

TEST(AlarmStore, PutsActiveAlarmsIntoTheOutboxOnceMore)
{
    InMemory store(DurableDatabase::kInMemory);
    for (std::uint64_t id = 1; id <= 4; ++id) {
        store.raise(alarmOf(id));
    }
    store.clear(2, "me", 2000);
    const auto before = outboxOf(store).size();

    const auto step = store.resend(0, 3, 10);

    EXPECT_EQ(step.code, result::kSuccess);
    EXPECT_EQ(step.count, 2U);
    EXPECT_EQ(step.lastSerial, 3U);
    auto added = outboxOf(store);
    added.erase(added.begin(), added.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_THAT(added,
                ElementsAre(faultOf(1, alarmOf(1)).octets(), faultOf(3, alarmOf(3)).octets()));
}

TEST(AlarmStore, IsUsedByManyThreadsAtOnce)
{
    constexpr int kThreads = 4;
    constexpr int kAlarms = 50;
    InMemory store(DurableDatabase::kInMemory);
    std::vector<std::vector<std::uint32_t>> given(kThreads);
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (auto& serials : given) {
        threads.emplace_back([&store, &serials] {
            for (int i = 0; i < kAlarms; ++i) {
                serials.push_back(store.raise(alarmOf(1)).serial);
                store.clear(serials.back(), "me", 2000);
                store.pageOfActive(0, 10, 9999);
                const auto page = store.nextNotifications(0, 10, 9999);
                if (!page.empty()) {
                    store.acknowledge(page.front().sequence);
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }

    std::set<std::uint32_t> all;
    for (const auto& serials : given) {
        all.insert(serials.begin(), serials.end());
    }
    EXPECT_EQ(all.size(), std::size_t{kThreads} * kAlarms);
    EXPECT_EQ(store.countActive(), 0U);
}

}  // namespace
