#include "host/platform/name_cache.h"

#include "host/platform/name_cache_settings.h"
#include "tests/unit/host_platform/scripted_lookup.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using talvik::LookupOutcome;
using talvik::NameCache;
using talvik::test::LoggerCapture;
using talvik::test::LookupScript;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const talvik::LookupAnswer kFound{LookupOutcome::Found, {"192.0.2.1", "2001:db8::1"}, ""};
const talvik::LookupAnswer kNoSuchName{LookupOutcome::NoSuchName, {}, "no such name"};

class NameCacheTest : public testing::Test {
protected:
    NameCache::Settings settings()
    {
        NameCache::Settings settings;
        settings.clock = [this] { return std::chrono::steady_clock::time_point(now_.load()); };
        settings.makeLookup = [this] { return script_.makeLookup(); };
        return settings;
    }

    /// What was asked is looked up, and ends like this.
    void answer(const std::string& name, const talvik::LookupAnswer& answer)
    {
        ASSERT_TRUE(script_.waitForStart(name));
        script_.answer(name, answer);
        script_.settle();
    }

    /// The cache's thread has seen the later time.
    void advance(std::chrono::seconds time)
    {
        now_ = now_.load() + time;
        script_.wake();
        script_.settle();
    }

    LoggerCapture log_{"host"};
    std::atomic<std::chrono::steady_clock::duration> now_{1h};
    LookupScript script_;
    std::unique_ptr<NameCache> cache_ = std::make_unique<NameCache>(settings());
};

}  // namespace

TEST_F(NameCacheTest, NumericAddressesNeedNoLookUp)
{
    for (const char* address : {"192.0.2.1", "2001:db8::1", "fe80::1%1"}) {
        cache_->retain(address);
        EXPECT_TRUE(cache_->resolves(address)) << address;
        EXPECT_THAT(cache_->addressesOf(address), ElementsAre(address));
        cache_->release(address);
    }

    EXPECT_EQ(script_.made(), 0) << "no thread either";
}

TEST_F(NameCacheTest, WhatCannotBeANameIsNotLookedUp)
{
    for (const char* text : {"", "two..dots", "bl ank", "-hyphen", "0.0.0.0", "1.2.3"}) {
        cache_->retain(text);
        EXPECT_FALSE(cache_->resolves(text));
        EXPECT_THAT(cache_->addressesOf(text), IsEmpty());
    }

    EXPECT_EQ(script_.made(), 0);
}

TEST_F(NameCacheTest, ANameResolvesOnceItsLookUpHasEnded)
{
    EXPECT_FALSE(cache_->resolves("nms.example"));
    EXPECT_THAT(cache_->addressesOf("nms.example"), IsEmpty());

    answer("nms.example", kFound);

    EXPECT_TRUE(cache_->resolves("NMS.example"));
    EXPECT_EQ(cache_->addressesOf("nms.example"), kFound.addresses);
    EXPECT_EQ(script_.started("nms.example"), 1);
}

TEST_F(NameCacheTest, RetainingBeginsTheFirstLookUp)
{
    cache_->retain("nms.example");
    cache_->retain("nms.example");

    answer("nms.example", kFound);

    EXPECT_EQ(script_.started("nms.example"), 1);
    EXPECT_TRUE(cache_->resolves("nms.example"));
}

TEST_F(NameCacheTest, LooksUpAgainWhenItsTimeHasCome)
{
    cache_->retain("nms.example");
    answer("nms.example", kFound);
    advance(59s);
    EXPECT_EQ(script_.started("nms.example"), 1);

    advance(7s);
    EXPECT_EQ(script_.started("nms.example"), 2);
    EXPECT_TRUE(cache_->resolves("nms.example")) << "while it is looked up";
    answer("nms.example", kNoSuchName);

    EXPECT_FALSE(cache_->resolves("nms.example"));
}

TEST_F(NameCacheTest, FurtherNamesWaitUntilALookUpEnds)
{
    for (int i = 0; i < 100; ++i) {
        cache_->retain("nms" + std::to_string(i));
    }
    ASSERT_TRUE(script_.waitForStarts(64));
    script_.settle();
    EXPECT_EQ(script_.starts(), 64);

    script_.answerAll(kFound);

    ASSERT_TRUE(script_.waitForStarts(100));
}

TEST_F(NameCacheTest, LogsWhenARetainedNameStopsResolvingAndWhenItDoesAgain)
{
    cache_->retain("nms.example");
    answer("nms.example", kFound);
    EXPECT_THAT(log_.lines(), IsEmpty());

    advance(66s);
    answer("nms.example", kNoSuchName);
    advance(6s);
    answer("nms.example", kFound);

    EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("nms.example: the name does not resolve (no "
                                                    "such name)"),
                                          HasSubstr("nms.example: the name resolves again")));
}

TEST_F(NameCacheTest, SumsUpManyFailuresAfterAMinute)
{
    for (int i = 0; i < 60; ++i) {
        cache_->retain("nms" + std::to_string(i));
    }
    ASSERT_TRUE(script_.waitForStarts(60));
    script_.answerAll(kNoSuchName);
    script_.settle();

    advance(60s);

    ASSERT_EQ(log_.lines().size(), 11u);
    EXPECT_THAT(log_.lines().back(), HasSubstr("50 more names stopped resolving"));
}

TEST_F(NameCacheTest, ItsThreadTakesNoSignals)
{
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);

    cache_->retain("nms.example");
    ASSERT_TRUE(script_.waitForStart("nms.example"));

    const auto blocked = script_.signalsBlocked();
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGALRM, SIGCHLD, SIGUSR1}) {
        EXPECT_TRUE(sigismember(&blocked, signal)) << signal;
    }
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    EXPECT_EQ(sigismember(&after, SIGTERM), sigismember(&before, SIGTERM));
}

TEST_F(NameCacheTest, EndsWhileLookUpsAreUnderWay)
{
    cache_->retain("nms.example");
    ASSERT_TRUE(script_.waitForStart("nms.example"));

    cache_.reset();

    EXPECT_EQ(script_.alive(), 0);
}

TEST_F(NameCacheTest, AfterItsStopItKnowsWhatItKnewAndLooksNothingUp)
{
    cache_->retain("known.example");
    answer("known.example", kFound);

    cache_->stop();
    cache_->stop();

    EXPECT_EQ(script_.alive(), 0);
    EXPECT_TRUE(cache_->resolves("known.example"));
    cache_->retain("new.example");
    EXPECT_FALSE(cache_->resolves("new.example"));
    cache_->release("new.example");
    cache_->release("known.example");
    EXPECT_EQ(script_.made(), 1);
}

TEST_F(NameCacheTest, TriesAgainWhenItsThreadCouldNotBeStarted)
{
    auto failing = settings();
    std::atomic<int> attempts{0};
    failing.makeLookup = [&]() -> std::unique_ptr<talvik::NameLookup> {
        if (++attempts < 3) {
            throw std::runtime_error("no descriptor left");
        }
        return script_.makeLookup();
    };
    cache_ = std::make_unique<NameCache>(failing);
    cache_->retain("nms.example");
    EXPECT_FALSE(cache_->resolves("nms.example"));
    EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("no descriptor left")));

    EXPECT_FALSE(cache_->resolves("nms.example"));
    answer("nms.example", kFound);

    EXPECT_TRUE(cache_->resolves("nms.example"));
    cache_.reset();  // it calls what is gone at the end
}

TEST_F(NameCacheTest, ALookUpThatCannotBeginIsTriedAgainAndHoldsUpNoOther)
{
    constexpr int kNames = 64;  // as many as may be under way: one that stays so is missed
    for (int i = 0; i < kNames; i += 2) {
        script_.failToStart("nms" + std::to_string(i));
    }
    for (int i = 0; i < kNames; ++i) {
        cache_->retain("nms" + std::to_string(i));
    }
    ASSERT_TRUE(script_.waitForStarts(kNames));
    script_.settle();
    EXPECT_THAT(log_.lines(), testing::Contains(HasSubstr("cannot look up nms0: ")));

    advance(6s);
    ASSERT_TRUE(script_.waitForStarts(kNames + kNames / 2));
    script_.answerAll(kFound);
    script_.settle();

    for (int i = 0; i < kNames; ++i) {
        EXPECT_TRUE(cache_->resolves("nms" + std::to_string(i))) << i;
    }
}

TEST_F(NameCacheTest, ManyMayAskWhileLookUpsEnd)
{
    constexpr int kRounds = 200;
    std::vector<std::thread> askers;
    for (int asker = 0; asker < 4; ++asker) {
        askers.emplace_back([this, asker] {
            for (int i = 0; i < kRounds; ++i) {
                const auto name = "nms" + std::to_string((asker + i) % 20);
                cache_->retain(name);
                cache_->resolves("unretained" + name);
                cache_->addressesOf(name);
                cache_->release(name);
            }
        });
    }
    for (int i = 0; i < kRounds; ++i) {
        script_.answerAll(i % 2 == 0 ? kFound : kNoSuchName);
        now_ = now_.load() + 10s;
    }
    for (auto& asker : askers) {
        asker.join();
    }
    cache_->retain("last.example");
    const auto end = std::chrono::steady_clock::now() + 30s;
    while (!cache_->resolves("last.example") && std::chrono::steady_clock::now() < end) {
        script_.answerAll(kFound);
    }

    EXPECT_TRUE(cache_->resolves("last.example"));
}

TEST(ProcessNameCache, IsHarmlessOnceStopped)
{
    const auto use = [] {
        talvik::nameCache().retain("localhost");
        talvik::stopNameCache();
        talvik::stopNameCache();
        talvik::nameCache().retain("later.test");
        const bool later = talvik::nameCache().resolves("later.test");
        const bool numeric = talvik::nameCache().resolves("127.0.0.1");
        std::exit(numeric && !later ? 0 : 1);
    };

    EXPECT_EXIT(use(), testing::ExitedWithCode(0), "");
}
