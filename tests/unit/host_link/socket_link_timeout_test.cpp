#include "tests/unit/host_link/socket_link_kit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

using namespace talvik;
using namespace talvik::test;
using namespace std::chrono_literals;

using SocketLinkTimeout = SocketLinkTest;

TEST_F(SocketLinkTimeout, AnswersAtOnceWhileThePenaltyForAHungBackEndLasts)
{
    FakePeer hung(path());
    auto now = SocketLink::Time() + 1000h;
    SocketLink link(path(), hasty(), [&now] { return now; });

    EXPECT_EQ(link.exchange(request_, answer_), BackendLink::kTimedOut);
    EXPECT_EQ(link.lastFailure(), "it did not answer within 50 ms");
    auto first = hung.accept();
    EXPECT_EQ(first.receive(kRequestSize), Wire::request(1, kCommand).bytes());

    now += 1h - 1ms;
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(link.exchange(request_, answer_), BackendLink::kTimedOut);
    }
    EXPECT_FALSE(hung.hasPending()) << "it must not even connect";

    now += 1ms;
    EXPECT_EQ(link.exchange(request_, answer_), BackendLink::kTimedOut);
    EXPECT_TRUE(hung.hasPending()) << "it must try again";
}

TEST_F(SocketLinkTimeout, ClosesTheConnectionSoThatALateAnswerIsLost)
{
    FakePeer slow(path());
    SocketLink link(path(), hasty());

    EXPECT_EQ(link.exchange(request_, answer_), BackendLink::kTimedOut);

    auto stream = slow.accept();
    EXPECT_TRUE(stream.closedByPeer());
    EXPECT_TRUE(answer_.oRecords.empty());
}

TEST_F(SocketLinkTimeout, GivesUpOnHalfAnAnswer)
{
    FakePeer slow(path());
    SocketLink link(path(), hasty());
    auto stream = std::make_unique<Stream>(backend::FileDescriptor());

    const int code = exchangeWhile(link, [&] {
        *stream = slow.accept();
        stream->trySend(Wire::reply(1, kCommand, "half").truncate(40).bytes());
    });

    EXPECT_EQ(code, BackendLink::kTimedOut);
    EXPECT_TRUE(answer_.oRecords.empty());
}

TEST_F(SocketLinkTimeout, GivesUpOnABackEndThatDoesNotReadALargeRequest)
{
    const FakePeer hung(path());
    SocketLink link(path(), hasty());
    makeLarge(request_);

    EXPECT_EQ(link.exchange(request_, answer_), BackendLink::kTimedOut);
    EXPECT_EQ(link.lastFailure(), "it did not take the request within 50 ms");
}

TEST_F(SocketLinkTimeout, GivesUpOnABackEndWhoseQueueIsFull)
{
    const FakePeer hung(path(), 0);
    const auto filler = Stream::connectedTo(path());
    SocketLink link(path(), hasty());

    EXPECT_EQ(link.exchange(request_, answer_), BackendLink::kTimedOut);
    EXPECT_EQ(link.lastFailure(), "it did not take the connection within 50 ms");
}

TEST_F(SocketLinkTimeout, NeverLetsOneThreadWaitForTheTimeoutsOfTheOthers)
{
    FakePeer hung(path());
    SocketLink link(path(), hasty());
    std::atomic<int> timedOut{0};

    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            Package request;
            Package answer;
            addRecord(request, kCommand);
            timedOut += link.exchange(request, answer) == BackendLink::kTimedOut ? 1 : 0;
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(timedOut, 8);
    hung.accept();
    EXPECT_FALSE(hung.hasPending()) << "only one may have tried";
}

}  // namespace
