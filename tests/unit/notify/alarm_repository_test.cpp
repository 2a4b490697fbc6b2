#include "notify/alarm_repository.h"

#include "tests/support/allocation_probe.h"
#include "tests/unit/notify/notify_kit.h"

#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <new>

namespace {

using namespace talvik::test;
using testing::ElementsAre;
using testing::IsEmpty;

class AlarmRepository : public NotifyTest {
protected:
    SERIALNO_LIST snapshot()
    {
        SERIALNO_LIST items;
        repository.getAllAlarmItems(items);
        return items;
    }

    CAlarmRepository_Singleton& repository = *CAlarmRepository_Singleton::getAlarmRepository();
};

TEST_F(AlarmRepository, StartsEmpty)
{
    EXPECT_EQ(repository.getAlarmRepositorySize(), 0u);
    EXPECT_THAT(repository.m_oSerialNos, IsEmpty());
}

TEST_F(AlarmRepository, IsTheSameObjectEachTime)
{
    EXPECT_EQ(CAlarmRepository_Singleton::getAlarmRepository(), &repository);
    EXPECT_EQ(CAlarmRepository_Singleton::m_AlarmRep.load(), &repository);
}

TEST_F(AlarmRepository, KeepsSerialNumbersOnceAndInTheOrderOfAdding)
{
    EXPECT_EQ(repository.addAlarm(5), 0);
    EXPECT_EQ(repository.addAlarm(7), 0);
    EXPECT_EQ(repository.addAlarm(5), -1);

    EXPECT_THAT(snapshot(), ElementsAre(5u, 7u));
    EXPECT_EQ(repository.getAlarmRepositorySize(), 2u);
    EXPECT_THAT(lines(),
                ElementsAre("warn 0x10014 addAlarm: alarm with serial num 5 has existed."));
}

TEST_F(AlarmRepository, RefusesZeroInSilence)
{
    repository.addAlarm(5);

    EXPECT_EQ(repository.addAlarm(0), -1);

    EXPECT_EQ(repository.getAlarmRepositorySize(), 1u);
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(AlarmRepository, KeepsTheLargestSerialNumber)
{
    EXPECT_EQ(repository.addAlarm(4294967295u), 0);
    EXPECT_EQ(repository.addAlarm(4294967295u), -1);

    EXPECT_THAT(
        lines(),
        ElementsAre("warn 0x10014 addAlarm: alarm with serial num 4294967295 has existed."));
}

TEST_F(AlarmRepository, DeletesOneAndKeepsTheOrderOfTheRest)
{
    for (const u_int serial : {5u, 7u, 6u}) {
        repository.addAlarm(serial);
    }

    EXPECT_EQ(repository.deleteAlarm(7), 0);

    EXPECT_THAT(snapshot(), ElementsAre(5u, 6u));
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(AlarmRepository, ASerialNumberComesBackAtTheEnd)
{
    repository.addAlarm(5);
    repository.addAlarm(7);
    repository.deleteAlarm(5);

    EXPECT_EQ(repository.addAlarm(5), 0);

    EXPECT_THAT(snapshot(), ElementsAre(7u, 5u));
}

TEST_F(AlarmRepository, DoesNotDeleteWhatIsNotThere)
{
    repository.addAlarm(5);

    EXPECT_EQ(repository.deleteAlarm(6), -1);
    EXPECT_EQ(repository.deleteAlarm(0), -1);

    EXPECT_THAT(snapshot(), ElementsAre(5u));
    EXPECT_THAT(lines(),
                ElementsAre("error 0x10014 deleteAlarm: alarm with serial num 6 not existed.",
                            "error 0x10014 deleteAlarm: alarm with serial num 0 not existed."));
}

TEST_F(AlarmRepository, ReplacesTheCallersList)
{
    repository.addAlarm(7);
    repository.addAlarm(5);
    SERIALNO_LIST items{1, 2, 3};

    EXPECT_EQ(repository.getAllAlarmItems(items), 0);

    EXPECT_THAT(items, ElementsAre(7u, 5u));
}

TEST_F(AlarmRepository, LeavesTheCallersListWhenItIsEmpty)
{
    SERIALNO_LIST items{1, 2, 3};

    EXPECT_EQ(repository.getAllAlarmItems(items), -1);

    EXPECT_THAT(items, ElementsAre(1u, 2u, 3u));
    EXPECT_THAT(lines(), ElementsAre("error 0x10014 getAllAlarmItems: alarm repository is empty."));
}

TEST_F(AlarmRepository, ForgetsEverythingWhenCleared)
{
    repository.addAlarm(7);
    repository.addAlarm(5);

    EXPECT_EQ(repository.clearAllAlarmItems(), 0);
    EXPECT_EQ(repository.clearAllAlarmItems(), 0);

    SERIALNO_LIST items;
    EXPECT_EQ(repository.getAlarmRepositorySize(), 0u);
    EXPECT_EQ(repository.getAllAlarmItems(items), -1);
    EXPECT_EQ(repository.addAlarm(7), 0);
}

TEST_F(AlarmRepository, TracesEveryOperationByItsSignature)
{
    host.log.clear();
    SERIALNO_LIST items;
    CAlarmRepository_Singleton::getAlarmRepository();
    repository.addAlarm(0);
    repository.deleteAlarm(0);
    repository.getAllAlarmItems(items);
    repository.clearAllAlarmItems();
    repository.getAlarmRepositorySize();

    std::vector<std::string> entered;
    for (const auto& line : host.texts("trace")) {
        if (line.rfind("enter ", 0) == 0) {
            entered.push_back(line.substr(6, line.find('(') - 6));
        }
    }
    EXPECT_THAT(entered, ElementsAre("static CAlarmRepository_Singleton* "
                                     "CAlarmRepository_Singleton::getAlarmRepository",
                                     "int CAlarmRepository_Singleton::addAlarm",
                                     "int CAlarmRepository_Singleton::deleteAlarm",
                                     "int CAlarmRepository_Singleton::getAllAlarmItems",
                                     "u_int CAlarmRepository_Singleton::getAlarmRepositorySize",
                                     "int CAlarmRepository_Singleton::clearAllAlarmItems",
                                     "u_int CAlarmRepository_Singleton::getAlarmRepositorySize"));
}

TEST_F(AlarmRepository, TellsItsSizeWhileTheMutexIsTaken)
{
    repository.addAlarm(5);
    CAlarmRepository_Singleton::m_oMutex.acquire();

    auto size = std::async(std::launch::async, [&] { return repository.getAlarmRepositorySize(); });
    const auto answered = size.wait_for(std::chrono::seconds(20));
    CAlarmRepository_Singleton::m_oMutex.release();

    EXPECT_EQ(answered, std::future_status::ready);
    EXPECT_EQ(size.get(), 1u);
}

TEST_F(AlarmRepository, ReleasesTheMutexWhenALineCannotBeWritten)
{
    host.onCall("error", [] { throw std::bad_alloc(); });

    EXPECT_THROW(repository.deleteAlarm(5), std::bad_alloc);

    ASSERT_EQ(CAlarmRepository_Singleton::m_oMutex.tryacquire(), 0);
    CAlarmRepository_Singleton::m_oMutex.release();
}

TEST_F(AlarmRepository, KeepsItsListWhenMemoryRunsOut)
{
    repository.addAlarm(5);
    repository.addAlarm(9);
    repository.deleteAlarm(9);
    host.recording = false;
    std::size_t failures = 0;
    for (bool added = false; !added; ++failures) {
        AllocationProbe probe;
        probe.failAfter(failures);
        try {
            added = repository.addAlarm(7) == 0;
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(repository.m_oSerialNos.size(), 1u) << failures;
            EXPECT_EQ(probe.live(), 0) << failures;
        }
        ASSERT_EQ(CAlarmRepository_Singleton::m_oMutex.tryacquire(), 0) << failures;
        CAlarmRepository_Singleton::m_oMutex.release();
    }
    EXPECT_GT(failures, 1u);
    host.recording = true;
    EXPECT_THAT(snapshot(), ElementsAre(5u, 7u));
}

}  // namespace
