#include "notify/alarm_repository.h"

#include "tests/unit/notify/notify_kit.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <set>
#include <thread>

namespace {

using namespace talvik::test;

constexpr unsigned kThreads = 8;
constexpr unsigned kRounds = 200;

template <typename Condition>
void waitUntil(Condition holds)
{
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!holds() && std::chrono::steady_clock::now() < limit) {
        std::this_thread::yield();
    }
}

template <typename Action>
void onThreads(Action action)
{
    std::atomic<unsigned> waiting{0};
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            ++waiting;
            waitUntil([&] { return waiting == kThreads; });
            action(i);
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

class AlarmRepositoryThreads : public NotifyTest {
protected:
    AlarmRepositoryThreads() { host.recording = false; }
};

/// All of them find no repository: the mutex is held until every thread has come in.
TEST_F(AlarmRepositoryThreads, AllGetTheOneObject)
{
    std::atomic<unsigned> entered{0};
    host.onCall("trace", [&] { ++entered; });
    for (unsigned round = 0; round < kRounds; ++round) {
        forgetRepository();
        entered = 0;
        std::vector<CAlarmRepository_Singleton*> seen(kThreads);

        std::atomic<bool> held{false};
        onThreads([&](unsigned i) {
            if (i == 0) {
                CAlarmRepository_Singleton::m_oMutex.acquire();
                held = true;
                waitUntil([&] { return entered == kThreads - 1; });
                CAlarmRepository_Singleton::m_oMutex.release();
            }
            waitUntil([&] { return held.load(); });
            seen[i] = CAlarmRepository_Singleton::getAlarmRepository();
        });

        ASSERT_NE(seen.front(), nullptr);
        ASSERT_THAT(seen, testing::Each(seen.front())) << round;
    }
}

TEST_F(AlarmRepositoryThreads, EachSerialNumberIsAddedAndDeletedByOne)
{
    auto& repository = *CAlarmRepository_Singleton::getAlarmRepository();
    std::atomic<unsigned> added{0};
    std::atomic<unsigned> deleted{0};

    onThreads([&](unsigned) {
        for (u_int serial = 1; serial <= kRounds; ++serial) {
            added += repository.addAlarm(serial) == 0 ? 1 : 0;
        }
    });
    EXPECT_EQ(added, kRounds);
    EXPECT_EQ(repository.getAlarmRepositorySize(), kRounds);
    onThreads([&](unsigned) {
        for (u_int serial = 1; serial <= kRounds; ++serial) {
            deleted += repository.deleteAlarm(serial) == 0 ? 1 : 0;
        }
    });

    EXPECT_EQ(deleted, kRounds);
    EXPECT_EQ(repository.getAlarmRepositorySize(), 0u);
}

TEST_F(AlarmRepositoryThreads, SnapshotsAreWholeWhileOthersChangeTheList)
{
    auto& repository = *CAlarmRepository_Singleton::getAlarmRepository();
    std::atomic<unsigned> torn{0};

    onThreads([&](unsigned i) {
        for (unsigned round = 0; round < kRounds; ++round) {
            const u_int serial = 1 + i * kRounds + round;
            SERIALNO_LIST items;
            repository.addAlarm(serial);
            if (repository.getAllAlarmItems(items) == 0) {
                const std::set<u_int> distinct(items.begin(), items.end());
                torn += distinct.size() == items.size() && distinct.count(0) == 0 ? 0 : 1;
            }
            if (i == 0 && round % 20 == 0) {
                repository.clearAllAlarmItems();
            }
            repository.deleteAlarm(serial);
        }
    });

    EXPECT_EQ(torn, 0u);
    EXPECT_EQ(repository.getAlarmRepositorySize(), 0u);
}

TEST_F(AlarmRepositoryThreads, BothHandlersBuildTrapsAtOnce)
{
    const auto record = AlarmCells().record();
    std::atomic<unsigned> right{0};

    onThreads([&](unsigned i) {
        for (unsigned round = 0; round < 50; ++round) {
            Bindings bindings;
            CTalvikNotifyMsgHandler& used = i % 2 == 0 ? handler : oidBased;
            const int result = used.constructAlarmTrapVb(*record, bindings.vbs);
            right += result == 0 && bindings.value(4) == "Disk failed" ? 1 : 0;
        }
    });

    EXPECT_EQ(right, kThreads * 50);
}

}  // namespace
