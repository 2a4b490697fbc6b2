#include "tests/unit/notify/notify_kit.h"

#include <gmock/gmock.h>

namespace {

using namespace talvik::test;
using testing::ElementsAre;
using testing::IsEmpty;

class RepositoryUpdate : public NotifyTest {
protected:
    CAlarmRepository_Singleton& repository = *CAlarmRepository_Singleton::getAlarmRepository();
};

TEST_F(RepositoryUpdate, AFaultAddsAndAClearRemoves)
{
    EXPECT_EQ(handler.putAlarmIntoRepository(5, 1), 0);
    EXPECT_EQ(handler.putAlarmIntoRepository(6, 1), 0);
    EXPECT_THAT(repository.m_oSerialNos, ElementsAre(5u, 6u));

    EXPECT_EQ(handler.putAlarmIntoRepository(5, 2), 0);

    EXPECT_THAT(repository.m_oSerialNos, ElementsAre(6u));
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(RepositoryUpdate, AnEventLeavesItAlone)
{
    repository.addAlarm(5);

    EXPECT_EQ(handler.putAlarmIntoRepository(5, 3), 0);
    EXPECT_EQ(handler.putAlarmIntoRepository(6, 3), 0);

    EXPECT_THAT(repository.m_oSerialNos, ElementsAre(5u));
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(RepositoryUpdate, AnAddThatIsRefusedSaysSo)
{
    repository.addAlarm(5);

    EXPECT_EQ(handler.putAlarmIntoRepository(5, 1), -1);
    EXPECT_EQ(handler.putAlarmIntoRepository(0, 1), -1);

    EXPECT_THAT(lines(),
                ElementsAre("warn 0x10014 addAlarm: alarm with serial num 5 has existed.",
                            "error 0x1002e updateRepository: add alarm with serial num 5 into "
                            "repository failed, errcode=-1",
                            "error 0x1002e updateRepository: add alarm with serial num 0 into "
                            "repository failed, errcode=-1"));
}

TEST_F(RepositoryUpdate, AClearOfNothingSaysSo)
{
    EXPECT_EQ(handler.putAlarmIntoRepository(4294967295u, 2), -1);

    EXPECT_THAT(lines(),
                ElementsAre("error 0x10014 deleteAlarm: alarm with serial num 4294967295 not "
                            "existed.",
                            "error 0x1002e updateRepository: delete clear type alarm 4294967295 "
                            "failed, errcode=-1"));
}

TEST_F(RepositoryUpdate, EveryOtherCategoryRemoves)
{
    for (const u_int category : {0u, 2u, 3u, 4u, 4294967295u}) {
        repository.addAlarm(5);
        EXPECT_EQ(handler.updateRepository(category, 5, &repository), 0) << category;
        EXPECT_THAT(repository.m_oSerialNos, IsEmpty()) << category;
    }
    EXPECT_EQ(handler.putAlarmIntoRepository(5, 0), -1);
}

TEST_F(RepositoryUpdate, WorksOnTheRepositoryThatItIsGiven)
{
    CAlarmRepository_Singleton other;

    EXPECT_EQ(handler.updateRepository(1, 5, &other), 0);

    EXPECT_THAT(other.m_oSerialNos, ElementsAre(5u));
    EXPECT_THAT(repository.m_oSerialNos, IsEmpty());
}

TEST_F(RepositoryUpdate, WithoutARepositoryNothingIsTakenOver)
{
    fakeNotifyHost().withoutRepository = true;

    for (const u_int category : {1u, 2u, 3u}) {
        host.log.clear();
        EXPECT_EQ(handler.putAlarmIntoRepository(5, category), -1) << category;
        EXPECT_THAT(lines(),
                    ElementsAre("error 0x10014 putAlarmIntoRepository: null repository ptr"));
    }
}

}  // namespace
