// Who waits for whom. One thread is held up in a call of the host while it has a lock; another must
// then wait, and is seen to.

#include "tests/unit/alarmconfig/alarm_catalogue_kit.h"
#include "tests/unit/alarmconfig/observed_thread.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <shared_mutex>
#include <thread>

namespace {

using namespace talvik::test;

using Action = std::function<void()>;

constexpr unsigned long long kUnknown = 404;

struct Step {
    const char* name;
    Action action;

    friend std::ostream& operator<<(std::ostream& os, const Step& step) { return os << step.name; }
};

const Step kAskOid{"getAlarmOidInfo", [] {
                       std::string oid;
                       CAlarmConfigParser::instance()->getAlarmOidInfo(kUnknown, oid);
                   }};

void askInfo(unsigned long long id)
{
    AlarmInfo info;
    CAlarmConfigParser::instance()->getAlarmInfo(id, "a", info.location, info.detail, info.id32,
                                                 info.name, info.suggestion);
}

const Step kAskInfo{"getAlarmInfo", [] { askInfo(kUnknown); }};
const Step kDestroy{"destroy", [] { CAlarmConfigParser::destroy(); }};
const Step kMake{"instance", [] { CAlarmConfigParser::instance(); }};

class AlarmLocks : public AlarmCatalogueTest {
protected:
    AlarmLocks()
    {
        defineAlarm("##00", "at ##00", "ends in ##");
        host.recording = false;  // which would be one lock more to wait for
    }

    /// True when `second` has to wait while `first` is in its first `call` of the host.
    bool waits(const Step& first, const char* call, const Step& second)
    {
        ObservedThread other;
        std::atomic<bool> reached{false};
        bool waited = false;
        host.onCall(call, [&] {
            if (!reached.exchange(true)) {
                other.start(second.action);
                waited = other.hasToWait();
            }
        });
        first.action();
        other.join();
        host.onCall(call, [] {});
        EXPECT_TRUE(reached) << first << " does not call " << call;
        return waited;
    }
};

TEST_F(AlarmLocks, LookUpsWaitForEachOther)
{
    for (const auto& first : {kAskOid, kAskInfo}) {
        for (const auto& second : {kAskOid, kAskInfo}) {
            parser();
            EXPECT_TRUE(waits(first, "warn", second)) << second << " behind " << first;
        }
    }
}

/// The last thing that such a look-up does is to say why it failed.
TEST_F(AlarmLocks, ALookUpHasItsLockUpToItsEnd)
{
    parser();
    const Step failing{"a failing getAlarmInfo", [] { askInfo(1); }};

    for (const auto* call : {"StrToUint", "error"}) {
        EXPECT_TRUE(waits(failing, call, kAskOid)) << call;
    }
}

TEST_F(AlarmLocks, DestructionWaitsForALookUp)
{
    for (const auto& lookUp : {kAskOid, kAskInfo}) {
        parser();
        EXPECT_TRUE(waits(lookUp, "warn", kDestroy)) << lookUp;
    }
}

TEST_F(AlarmLocks, ALookUpIsNotHeldUpByLoading)
{
    // Loading runs under the singleton's lock alone: nobody has the parser before it is done.
    std::string path = "alarms.json";
    auto& loaded = parser();
    const Step load{"parse", [&] { loaded.parse(path); }};

    EXPECT_FALSE(waits(load, "getKELRootEnv", kAskOid));
}

TEST_F(AlarmLocks, CreationWaitsForCreation)
{
    CAlarmConfigParser* second = nullptr;
    std::atomic<int> loads{0};
    host.onCall("getDeviceItem", [&] { ++loads; });

    EXPECT_TRUE(waits(kMake, "getKELRootEnv",
                      {"instance", [&] { second = CAlarmConfigParser::instance(); }}));

    EXPECT_EQ(second, CAlarmConfigParser::instance());
    EXPECT_EQ(loads, 2);  // both files once
}

TEST_F(AlarmLocks, DestructionWaitsForCreation)
{
    EXPECT_TRUE(waits(kMake, "getKELRootEnv", kDestroy));

    std::atomic<int> loads{0};
    host.onCall("getDeviceItem", [&] { ++loads; });
    parser();
    EXPECT_EQ(loads, 2);  // what was being made is gone
}

TEST_F(AlarmLocks, CreationIsFreeAgainAfterAFailure)
{
    folder.write("enums.json", "{}");
    for (int i = 0; i < 2; ++i) {
        EXPECT_THROW(CAlarmConfigParser::instance(), std::exception);
    }
    defineEnums("");
    ObservedThread other;

    other.start(kMake.action);

    ASSERT_TRUE(other.ends());
}

/// Look-ups beside creation as they like, beside destruction where it is allowed: while no look-up
/// has the parser, or is about to.
TEST_F(AlarmLocks, ManyThreadsLookUpWhileOthersMakeAndDestroy)
{
    constexpr int kLookers = 8;
    constexpr int kRounds = 100;
    defineAlarms(R"({"eventID":"1","alarmOid":"1.7","detail":"##00{0:off;1:on}"})");
    std::shared_mutex parserInUse;
    std::atomic<int> right{0};
    std::atomic<int> made{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kLookers; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < kRounds; ++round) {
                const std::shared_lock<std::shared_mutex> use(parserInUse);
                const auto info = infoOf(1, std::to_string(i % 2));
                right += info.detail == (i % 2 == 0 ? "off" : "on") && oidOf(1) == "1.7" ? 1 : 0;
            }
        });
    }
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                made += CAlarmConfigParser::instance() != nullptr ? 1 : 0;
            }
        });
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                const std::unique_lock<std::shared_mutex> alone(parserInUse);
                CAlarmConfigParser::destroy();
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(right, kLookers * kRounds);
    EXPECT_EQ(made, 2 * kRounds);
}

}  // namespace
