#include "framework/debug_kit_guard.h"

#include "tests/support/fake_host_test.h"

#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

class DebugKitGuard : public talvik::test::FakeHostTest {};

TEST_F(DebugKitGuard, TracesEnterAndLeave)
{
    {
        const CKELDebugKitGuard guard(4, "f");
        EXPECT_EQ(host.texts("trace"), Texts({"enter f..."}));
    }
    EXPECT_EQ(host.texts("trace"), Texts({"enter f...", "leave f: OK"}));
    EXPECT_EQ(host.log.front().moduleId, 4U);
}

TEST_F(DebugKitGuard, LooksTheKitUpOnce)
{
    {
        CKELDebugKitGuard guard(4, "f");
        guard.debug(1, "l", 1, "x");
        guard.error(1, "l", 1, "x");
    }
    EXPECT_EQ(host.count("find"), 1U);
}

TEST_F(DebugKitGuard, ReportsNotOkOnceTheOutcomeIsFalse)
{
    {
        CKELDebugKitGuard guard(4, "f");
        guard.setOutcome(false);
    }
    EXPECT_EQ(host.texts("trace").back(), "leave f: NOK");
}

TEST_F(DebugKitGuard, LeavesAlsoWhileAnExceptionPasses)
{
    EXPECT_THROW(
        {
            const CKELDebugKitGuard guard(4, "f");
            throw std::runtime_error("passing");
        },
        std::runtime_error);
    EXPECT_EQ(host.texts("trace").back(), "leave f: OK");
}

TEST_F(DebugKitGuard, LetsNothingOutOfTheDestructor)
{
    EXPECT_NO_THROW({
        const CKELDebugKitGuard guard(4, "f");
        host.onCall("trace", [] { throw std::runtime_error("disk full"); });
    });
    EXPECT_EQ(host.texts("trace"), Texts({"enter f..."}));
}

TEST_F(DebugKitGuard, CopiesTheName)
{
    std::string name = "f";
    {
        const CKELDebugKitGuard guard(4, name);
        name = "changed";
    }
    EXPECT_EQ(host.texts("trace").back(), "leave f: OK");
}

TEST_F(DebugKitGuard, PassesEachLevelOnUnchanged)
{
    CKELDebugKitGuard guard(9, "f");
    guard.debug(0xFFFF, "begin", 12, "plain");
    guard.warn(0x1002C, "parseAlarmItem", 4000000000U, "alarm %llu of %s", 5ULL, "disk");
    guard.error(0x1234567890ABCDEFULL, "end", 0, "%d%%", -1);

    ASSERT_EQ(host.log.size(), 4U);
    EXPECT_EQ(host.log[1].level, "debug");
    EXPECT_EQ(host.log[1].messageId, 0xFFFFU);
    EXPECT_EQ(host.log[1].label, "begin");
    EXPECT_EQ(host.log[1].line, 12U);
    EXPECT_EQ(host.log[1].text, "plain");
    EXPECT_EQ(host.log[2].level, "warn");
    EXPECT_EQ(host.log[2].moduleId, 9U);
    EXPECT_EQ(host.log[2].line, 4000000000U);
    EXPECT_EQ(host.log[2].text, "alarm 5 of disk");
    EXPECT_EQ(host.log[3].level, "error");
    EXPECT_EQ(host.log[3].messageId, 0x1234567890ABCDEFULL);
    EXPECT_EQ(host.log[3].text, "-1%");
}

TEST_F(DebugKitGuard, ServesSeveralThreadsAtOnce)
{
    constexpr std::size_t kThreads = 8;
    constexpr std::size_t kRounds = 2000;
    // Hosts make the manager before their threads: ACE's double check alone does not order it.
    CKELDebugKitGuard(4, "first").debug(1, "l", 1, "x");
    host.reset();
    std::promise<void> start;
    const std::shared_future<void> started = start.get_future().share();
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kThreads; ++i) {
        threads.emplace_back([started] {
            started.wait();
            for (std::size_t round = 0; round < kRounds; ++round) {
                CKELDebugKitGuard(4, "f").debug(1, "l", 1, "x");
            }
        });
    }
    start.set_value();
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(host.count("find"), kThreads * kRounds);
    EXPECT_EQ(host.texts("debug"), Texts(kThreads * kRounds, "x"));
    EXPECT_EQ(host.texts("trace").size(), 2 * kThreads * kRounds);
}

}  // namespace
