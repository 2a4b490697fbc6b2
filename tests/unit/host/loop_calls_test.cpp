#include "host/loop_calls.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using talvik::LoopCalls;
using talvik::LoopWatcher;

constexpr std::chrono::milliseconds kLong{20000};
constexpr std::chrono::milliseconds kShort{1};

bool waitFor(const LoopCalls& calls)
{
    pollfd watched{calls.descriptor(), POLLIN, 0};
    return ::poll(&watched, 1, static_cast<int>(kLong.count())) == 1;
}

TEST(LoopCalls, RunOnTheLoopsThread)
{
    LoopCalls calls;
    std::thread::id ranOn;
    bool done = false;
    std::thread caller(
        [&] { done = calls.run([&] { ranOn = std::this_thread::get_id(); }, kLong); });
    EXPECT_TRUE(waitFor(calls));
    calls.proceed(true, LoopWatcher::Time());
    caller.join();
    EXPECT_TRUE(done);
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST(LoopCalls, AreNotRunOnceTheirTimeIsOver)
{
    LoopCalls calls;
    bool ran = false;
    std::thread caller([&] { EXPECT_FALSE(calls.run([&] { ran = true; }, kShort)); });
    caller.join();
    EXPECT_TRUE(waitFor(calls));
    calls.proceed(true, LoopWatcher::Time());
    EXPECT_FALSE(ran);
}

TEST(LoopCalls, ThrowWhatTheWorkThrows)
{
    LoopCalls calls;
    std::thread caller([&] {
        EXPECT_THROW(calls.run([] { throw std::runtime_error("no"); }, kLong), std::runtime_error);
    });
    EXPECT_TRUE(waitFor(calls));
    calls.proceed(true, LoopWatcher::Time());
    caller.join();
}

TEST(LoopCalls, AreRefusedWhenTheLoopHasEnded)
{
    LoopCalls calls;
    std::thread caller([&] { EXPECT_FALSE(calls.run([] {}, kLong)); });
    EXPECT_TRUE(waitFor(calls));
    calls.close();
    caller.join();
    EXPECT_FALSE(calls.run([] {}, kLong));
}

TEST(LoopCalls, OfManyThreadsAreAllRun)
{
    LoopCalls calls;
    constexpr int kThreads = 8;
    constexpr int kCalls = 50;
    int ran = 0;  // on this thread alone
    std::atomic<int> answered{0};
    std::vector<std::thread> callers;
    for (int made = 0; made < kThreads; ++made) {
        callers.emplace_back([&] {
            for (int call = 0; call < kCalls; ++call) {
                answered += calls.run([&] { ++ran; }, kLong) ? 1 : 0;
            }
        });
    }
    while (ran < kThreads * kCalls) {
        ASSERT_TRUE(waitFor(calls));
        calls.proceed(true, LoopWatcher::Time());
    }
    for (auto& caller : callers) {
        caller.join();
    }
    EXPECT_EQ(answered, kThreads * kCalls);
}

}  // namespace
