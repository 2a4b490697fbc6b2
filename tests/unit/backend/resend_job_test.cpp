#include "backend/resend_job.h"

#include "host/platform/durable_database.h"
#include "tests/unit/backend/alarm_kit.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <gmock/gmock.h>

namespace {

using namespace talvik::test;
using namespace talvik::backend;
using namespace std::chrono_literals;
using talvik::DurableDatabase;
using testing::ElementsAre;
using testing::HasSubstr;
using Time = ResendJob::Time;

class ResendJobTest : public testing::Test {
protected:
    void raise(int count)
    {
        for (; count != 0; --count) {
            store_.raise(alarmOf(1));
        }
        sentBefore_ = outboxOf(store_).size();
    }

    std::size_t sentAgain() const { return outboxOf(store_).size() - sentBefore_; }

    AlarmStore store_{DurableDatabase::kInMemory};
    ResendJob job_{store_};
    std::size_t sentBefore_ = 0;
    const Time start_{1000s};
};

TEST_F(ResendJobTest, SendsTenAlarmsEachFiftyMilliseconds)
{
    raise(25);
    EXPECT_EQ(job_.deadline(), Time::max());

    EXPECT_EQ(job_.start(), 25U);

    EXPECT_LE(job_.deadline(), start_);
    job_.proceed(start_);
    EXPECT_EQ(sentAgain(), 10U);
    EXPECT_EQ(job_.deadline(), start_ + 50ms);
    job_.proceed(start_ + 49ms);
    EXPECT_EQ(sentAgain(), 10U);
    job_.proceed(start_ + 50ms);
    EXPECT_EQ(sentAgain(), 20U);
    job_.proceed(start_ + 300ms);  // a late step is not made up for
    EXPECT_EQ(sentAgain(), 25U);
    EXPECT_EQ(job_.deadline(), Time::max());
}

TEST_F(ResendJobTest, SendsNoMoreThanTwoHundredASecond)
{
    raise(1000);
    job_.start();

    for (auto now = start_; now < start_ + 1s; now += 1ms) {
        job_.proceed(now);
    }

    EXPECT_EQ(sentAgain(), 200U);
}

TEST_F(ResendJobTest, SendsWhatWasActiveAtItsStart)
{
    raise(12);
    job_.start();
    job_.proceed(start_);
    store_.clear(11, "me", 2000);
    store_.raise(alarmOf(2));
    sentBefore_ += 2;

    job_.proceed(start_ + 1s);
    job_.proceed(start_ + 2s);

    EXPECT_EQ(sentAgain(), 11U);
    EXPECT_EQ(job_.deadline(), Time::max());
}

TEST_F(ResendJobTest, StartsOverWithoutGoingFaster)
{
    raise(15);
    job_.start();
    job_.proceed(start_);

    EXPECT_EQ(job_.start(), 15U);

    EXPECT_EQ(job_.deadline(), start_ + 50ms);
    job_.proceed(start_ + 1ms);
    EXPECT_EQ(sentAgain(), 10U);
    job_.proceed(start_ + 50ms);
    job_.proceed(start_ + 100ms);
    EXPECT_EQ(sentAgain(), 25U);
    EXPECT_EQ(outboxOf(store_)[sentBefore_ + 10], faultOf(1, alarmOf(1)).octets());
}

TEST_F(ResendJobTest, HasNothingToDoWithoutActiveAlarms)
{
    EXPECT_EQ(job_.start(), 0U);

    EXPECT_EQ(job_.deadline(), Time::max());
}

TEST(ResendJob, EndsWithALineWhenTheOutboxIsFull)
{
    const LoggerCapture log("backend");
    StoreLimits limits;
    limits.outbox = 22;
    AlarmStore store(DurableDatabase::kInMemory, limits);
    ResendJob job(store);
    for (int i = 0; i < 12; ++i) {
        store.raise(alarmOf(1));
    }
    job.start();

    job.proceed(Time{1s});
    job.proceed(Time{2s});

    EXPECT_EQ(outboxOf(store).size(), 22U);
    EXPECT_EQ(job.deadline(), Time::max());
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("22 notifications wait"),
                                         HasSubstr("serial numbers above 10 are not sent again")));
}

}  // namespace
