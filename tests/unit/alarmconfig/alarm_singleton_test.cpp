#include "framework/kel_exception.h"
#include "tests/support/allocation_probe.h"
#include "tests/unit/alarmconfig/alarm_catalogue_kit.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

namespace {

using namespace talvik::test;

constexpr int kThreads = 8;

template <typename Action>
void onThreads(int count, Action action)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back(action, i);
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

class AlarmSingleton : public AlarmCatalogueTest {
protected:
    void defineEverything()
    {
        defineAlarms(
            R"({"eventID":"1","name":"A name longer than what a string keeps within itself",
            "detail":"Disk ##00 in enclosure ##01 changed to ##02{0:normal;1:faulty}.",
            "location":"Enclosure ##01, slot ##03","suggestion":"Replace the disk ##00.",
            "alarmOid":"1.3.6.1.4.1.99999.2.91.10.3","paramDesc":"1=EnclosureKind"},
            {"eventID":"2"})");
        defineEnums(R"({"name":"EnclosureKind","enum_member":[{"value":"E1","name":"front"}]})");
    }
};

TEST_F(AlarmSingleton, LoadsOnce)
{
    auto* first = CAlarmConfigParser::instance();

    EXPECT_EQ(CAlarmConfigParser::instance(), first);
    EXPECT_EQ(host.count("getKELRootEnv"), 2u);
}

TEST_F(AlarmSingleton, TriesAgainAfterAFailure)
{
    folder.write("enums.json", "{}");
    EXPECT_THROW(CAlarmConfigParser::instance(), CKEL_Exception);
    EXPECT_THROW(CAlarmConfigParser::instance(), CKEL_Exception);
    defineEnums("");
    defineAlarms(R"({"eventID":"1","alarmOid":"1.1"})");

    EXPECT_EQ(oidOf(1), "1.1");
}

TEST_F(AlarmSingleton, LoadsAnewAfterDestroy)
{
    defineAlarms(R"({"eventID":"1","alarmOid":"old"})");
    EXPECT_EQ(oidOf(1), "old");
    defineAlarms(R"({"eventID":"1","alarmOid":"new"})");
    EXPECT_EQ(oidOf(1), "old");

    CAlarmConfigParser::destroy();

    EXPECT_EQ(oidOf(1), "new");
}

TEST_F(AlarmSingleton, DestroysNothingWithoutInstance)
{
    CAlarmConfigParser::destroy();
    CAlarmConfigParser::destroy();

    EXPECT_EQ(host.count("getDeviceItem"), 0u);
}

TEST_F(AlarmSingleton, LeavesNothingBehind)
{
    defineEverything();
    parser();  // what the libraries keep from their first use on
    CAlarmConfigParser::destroy();
    host.recording = false;
    const AllocationProbe probe;

    parser();
    CAlarmConfigParser::destroy();

    EXPECT_EQ(probe.live(), 0);
}

TEST_F(AlarmSingleton, LeavesNothingBehindWhenMemoryRunsOutWhileLoading)
{
    defineEverything();
    parser();
    CAlarmConfigParser::destroy();
    host.recording = false;
    std::size_t failures = 0;
    for (bool loaded = false; !loaded; ++failures) {
        ASSERT_LT(failures, 10000u);
        AllocationProbe probe;
        probe.failAfter(failures);
        try {
            CAlarmConfigParser::instance();
            loaded = !probe.failed();
        } catch (const std::exception&) {
            EXPECT_TRUE(probe.failed()) << failures;
        }
        if (loaded || probe.failed()) {
            CAlarmConfigParser::destroy();
        }
        EXPECT_EQ(probe.live(), 0) << failures;
    }
    EXPECT_GT(failures, 50u);
    host.recording = true;
    EXPECT_EQ(infoOf(1, "D3,E1,1,7").location, "Enclosure front, slot 7");
}

TEST_F(AlarmSingleton, LeavesNothingBehindWhenMemoryRunsOutInALookUp)
{
    defineEverything();
    parser();
    host.recording = false;
    infoOf(1, "");  // what is made once in a process is none of a look-up's
    std::size_t failures = 0;
    for (bool done = false; !done; ++failures) {
        ASSERT_LT(failures, 10000u);
        AllocationProbe probe;
        probe.failAfter(failures);
        try {
            const auto info = infoOf(1, "a parameter of some length,E1,a#44;&#38;,##00");
            done = !probe.failed();
            EXPECT_EQ(info.result, 0);
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(probe.failed()) << failures;
        }
        EXPECT_EQ(probe.live(), 0) << failures;
    }
    EXPECT_GT(failures, 10u);
}

TEST_F(AlarmSingleton, GivesAllThreadsTheSameParser)
{
    std::vector<CAlarmConfigParser*> parsers(kThreads);

    onThreads(kThreads, [&](int i) {
        parsers[static_cast<std::size_t>(i)] = CAlarmConfigParser::instance();
    });

    EXPECT_THAT(parsers, testing::Each(parsers.front()));
    EXPECT_EQ(host.count("getKELRootEnv"), 2u);
}

TEST_F(AlarmSingleton, AnswersManyThreadsAtOnce)
{
    defineEverything();
    std::atomic<int> right{0};

    onThreads(kThreads, [&](int i) {
        const auto slot = std::to_string(i);
        for (int round = 0; round < 200; ++round) {
            const auto info = infoOf(1, "D,E1,1," + slot);
            if (info.location == "Enclosure front, slot " + slot && oidOf(2) == "None") {
                ++right;
            }
        }
    });

    EXPECT_EQ(right, kThreads * 200);
}

TEST_F(AlarmSingleton, IsMadeAndDestroyedByManyThreads)
{
    std::atomic<int> made{0};

    onThreads(kThreads, [&](int i) {
        for (int round = 0; round < 50; ++round) {
            if (i % 2 == 0) {
                made += CAlarmConfigParser::instance() != nullptr ? 1 : 0;
            } else {
                CAlarmConfigParser::destroy();
            }
        }
    });

    EXPECT_EQ(made, kThreads / 2 * 50);
}

}  // namespace
