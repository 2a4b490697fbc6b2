#include "host/counted_link.h"

#include "tests/unit/host/health_kit.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using talvik::BackendLink;
using talvik::LinkCounters;
using talvik::Package;
using talvik::test::ManualHealthClock;

/// Gives one result after the other; nothing is an allocation failure.
class ScriptedLink : public BackendLink {
public:
    explicit ScriptedLink(std::vector<std::optional<int>> results) : results_(std::move(results)) {}

    int exchange(Package&, Package&) override
    {
        const auto result = results_.at(next_++);
        if (!result) {
            throw std::bad_alloc();
        }
        return *result;
    }

    std::string name() const override { return "unix:/of/the/link"; }

private:
    const std::vector<std::optional<int>> results_;
    std::size_t next_ = 0;
};

class CountedLinkOver : public testing::Test {
protected:
    int exchange(std::optional<int> result)
    {
        talvik::CountedLink link(std::make_unique<ScriptedLink>(std::vector{result}), counters);
        Package request;
        Package answer;
        return link.exchange(request, answer);
    }

    ManualHealthClock clock;
    LinkCounters counters{clock.clock()};
};

TEST_F(CountedLinkOver, NoExchangeKnowsNothing)
{
    const auto values = counters.values();

    EXPECT_EQ(values.exchanges, 0U);
    EXPECT_EQ(values.failures, 0U);
    EXPECT_EQ(values.answered, std::nullopt);
    EXPECT_EQ(values.works, std::nullopt);
    EXPECT_EQ(values.failed, LinkCounters::Time::min());
}

TEST_F(CountedLinkOver, AnAnswerIsCountedWhateverItSays)
{
    for (const int result : {0, 0x1000014, 0x1000010, -1}) {
        clock.advance(1s);
        EXPECT_EQ(exchange(result), result);

        const auto values = counters.values();
        EXPECT_EQ(values.works, true);
        EXPECT_EQ(values.answered, clock.date());
    }
    EXPECT_EQ(counters.values().exchanges, 4U);
    EXPECT_EQ(counters.values().failures, 0U);
    EXPECT_EQ(counters.values().failed, LinkCounters::Time::min());
}

TEST_F(CountedLinkOver, AFailureOfTheLinkIsCountedAndLeavesTheLatestAnswer)
{
    exchange(0);
    const auto answered = clock.date();
    std::uint64_t failures = 0;
    for (const int result :
         {BackendLink::kUnreachable, BackendLink::kTimedOut, BackendLink::kProtocolError}) {
        clock.advance(1s);
        EXPECT_EQ(exchange(result), result);

        const auto values = counters.values();
        EXPECT_EQ(values.exchanges, 1 + ++failures);
        EXPECT_EQ(values.failures, failures);
        EXPECT_EQ(values.works, false);
        EXPECT_EQ(values.failed, clock.steady());
        EXPECT_EQ(values.answered, answered);
    }
}

TEST_F(CountedLinkOver, AnAnswerAfterAFailureKeepsWhenThatWas)
{
    exchange(BackendLink::kTimedOut);
    const auto failed = clock.steady();
    clock.advance(1s);

    exchange(0);

    EXPECT_EQ(counters.values().works, true);
    EXPECT_EQ(counters.values().failed, failed);
    EXPECT_EQ(counters.values().failures, 1U);
}

TEST_F(CountedLinkOver, WhatThrowsIsPassedOn)
{
    EXPECT_THROW(exchange(std::nullopt), std::bad_alloc);
}

TEST_F(CountedLinkOver, AnotherLinkHasItsName)
{
    const talvik::CountedLink link(
        std::make_unique<ScriptedLink>(std::vector<std::optional<int>>()), counters);

    EXPECT_EQ(link.name(), "unix:/of/the/link");
}

TEST_F(CountedLinkOver, ThreadsLoseNoExchange)
{
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this, &ready, i] {
            ++ready;
            while (ready < 4) {
                std::this_thread::yield();
            }
            for (int each = 0; each < 50000; ++each) {
                counters.add(i % 2 == 0);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(counters.values().exchanges, 200000U);
    EXPECT_EQ(counters.values().failures, 100000U);
}

}  // namespace
