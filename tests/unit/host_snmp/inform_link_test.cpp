#include "host/snmp/inform_link.h"

#include "tests/unit/host_snmp/fake_engine.h"
#include "tests/unit/host_snmp/sender_kit.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using talvik::InformLink;
using talvik::SessionSettings;
using talvik::TrapUser;
using talvik::UsmUsers;
using talvik::test::FakeEngine;
using talvik::test::serveUntil;
using talvik::test::UdpReceiver;

const std::string kEngineId = "\x80\x01\x86\x9F\x05receiver1";

/// Links to one version 3 receiver, at a time that the test moves.
class InformLinks : public testing::Test {
protected:
    InformLinks()
    {
        std::vector<TrapUser> users{
            {"trapuser", "SHA-256", "authentication", "AES", "privacy-phrase"}};
        users_.replace(users);
    }

    std::unique_ptr<InformLink> makeLink()
    {
        return std::make_unique<InformLink>(users_, [] {});
    }

    InformLink::Way open(InformLink& link)
    {
        SessionSettings settings;
        settings.address = receiver_.address();
        settings.port = receiver_.port();
        settings.timeout = 20ms;
        settings.retries = 0;
        settings.version3 = true;
        settings.user = "trapuser";
        return link.open(settings, now_, problem_);
    }

    /// True if the receiver is asked for its engine ID now; nobody answers.
    bool asksInVain(InformLink& link)
    {
        EXPECT_EQ(open(link), InformLink::Way::Waiting) << problem_;
        if (!receiver_.hasSomething()) {
            return false;
        }
        receiver_.receive();
        bool waiting = true;
        EXPECT_TRUE(serveUntil([&] { waiting = link.proceed(now_); }, [&] { return !waiting; }));
        return true;
    }

    /// Opens it with the receiver's help.
    void openFully(InformLink& link)
    {
        ASSERT_EQ(open(link), InformLink::Way::Waiting) << problem_;
        receiver_.answer(FakeEngine(kEngineId).reportTo(receiver_.receive()));
        ASSERT_TRUE(serveUntil([&] { link.proceed(now_); },
                               [&] { return open(link) == InformLink::Way::Open; }));
    }

    static bool libraryKnowsUser()
    {
        return usm_get_user(reinterpret_cast<const u_char*>(kEngineId.data()), kEngineId.size(),
                            "trapuser") != nullptr;
    }

    UdpReceiver receiver_;
    UsmUsers users_;
    std::string problem_;
    InformLink::Time now_ = std::chrono::steady_clock::now();
};

TEST_F(InformLinks, AskADeadReceiverEveryFiveSecondsAtLeast)
{
    const auto link = makeLink();

    for (int round = 0; round < 6; ++round) {
        EXPECT_TRUE(asksInVain(*link)) << "round " << round;
        now_ += 5s;
    }
}

TEST_F(InformLinks, AskADeadReceiverLessOften)
{
    const auto link = makeLink();
    for (const auto pause : {1s, 2s, 4s, 5s}) {
        ASSERT_TRUE(asksInVain(*link));
        now_ += pause - 1ms;
        EXPECT_FALSE(asksInVain(*link)) << pause.count();
        now_ += 1ms;
    }
}

TEST_F(InformLinks, AskAtOnceAndOftenAgainAfterTheReceiverMoved)
{
    const auto link = makeLink();
    for (int round = 0; round < 4; ++round) {
        ASSERT_TRUE(asksInVain(*link));
        now_ += 5s;
    }
    ASSERT_TRUE(asksInVain(*link));

    link->forgetEngine();

    EXPECT_TRUE(asksInVain(*link));
    now_ += 1s;
    EXPECT_TRUE(asksInVain(*link));
}

TEST_F(InformLinks, LeaveNoUserOfAnEngineThatIsForgotten)
{
    const auto link = makeLink();
    openFully(*link);
    ASSERT_TRUE(libraryKnowsUser());

    link->close();
    EXPECT_TRUE(libraryKnowsUser()) << "the engine is still the same";
    link->forgetEngine();

    EXPECT_FALSE(libraryKnowsUser());
}

TEST_F(InformLinks, LeaveNoUserWhenTheyGo)
{
    auto link = makeLink();
    openFully(*link);
    ASSERT_TRUE(libraryKnowsUser());

    link.reset();

    EXPECT_FALSE(libraryKnowsUser());
}

TEST_F(InformLinks, ShareTheUserOfAnEngine)
{
    const auto first = makeLink();
    const auto second = makeLink();
    openFully(*first);
    openFully(*second);

    first->forgetEngine();
    EXPECT_TRUE(libraryKnowsUser()) << "the other one needs it";
    second->forgetEngine();

    EXPECT_FALSE(libraryKnowsUser());
}

TEST_F(InformLinks, HaveTheUserAgainAfterItChanged)
{
    const auto link = makeLink();
    openFully(*link);
    std::vector<TrapUser> users{{"trapuser", "SHA-256", "another-phrase", "AES", "privacy-phrase"}};

    users_.replace(users);
    ASSERT_FALSE(libraryKnowsUser());
    link->close();
    EXPECT_EQ(open(*link), InformLink::Way::Open) << problem_;

    EXPECT_TRUE(libraryKnowsUser());
    link->forgetEngine();
    EXPECT_FALSE(libraryKnowsUser());
}

}  // namespace
