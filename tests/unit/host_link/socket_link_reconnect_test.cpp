#include "backend/command_server.h"
#include "tests/unit/host_link/socket_link_kit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace talvik;
using namespace talvik::test;
using testing::HasSubstr;

using SocketLinkReconnect = SocketLinkTest;

TEST_F(SocketLinkReconnect, TriesAnAbsentBackEndAgainWithEveryExchange)
{
    SocketLink link(path(), patient());

    EXPECT_EQ(link.exchange(request_, answer_), BackendLink::kUnreachable);
    EXPECT_EQ(link.exchange(request_, answer_), BackendLink::kUnreachable);
    EXPECT_EQ(link.lastFailure(), "cannot connect: No such file or directory");

    FakePeer peer(path());
    EXPECT_EQ(exchangeWhile(link,
                            [&] {
                                auto stream = peer.accept();
                                answer(stream, 3);
                            }),
              0);
}

TEST_F(SocketLinkReconnect, IsRefusedByASocketThatNobodyListensOn)
{
    {
        const FakePeer gone(path());
    }
    SocketLink link(path(), patient());

    EXPECT_EQ(link.exchange(request_, answer_), BackendLink::kUnreachable);
    EXPECT_EQ(link.lastFailure(), "cannot connect: Connection refused");
}

TEST_F(SocketLinkReconnect, ConnectsAnewWithinTheExchangeWhenTheIdleConnectionWasClosed)
{
    FakePeer peer(path());
    SocketLink link(path(), patient());
    for (std::uint32_t number = 1; number <= 3; ++number) {
        const int code = exchangeWhile(link, [&] {
            auto stream = peer.accept();
            answer(stream, number);
        });
        EXPECT_EQ(code, 0) << "exchange " << number;
    }
}

TEST_F(SocketLinkReconnect, FindsABackEndThatWasStoppedAndStartedAgain)
{
    backend::CommandServer commands;
    commands.add(kCommand, "C", [](const Package&, Package&) { return backend::result::kSuccess; });
    auto server = std::make_unique<RunningServer>(commands, path());
    SocketLink link(path(), patient());

    EXPECT_EQ(link.exchange(request_, answer_), 0);
    server.reset();
    EXPECT_EQ(link.exchange(request_, answer_), BackendLink::kUnreachable);
    server = std::make_unique<RunningServer>(commands, path());
    EXPECT_EQ(link.exchange(request_, answer_), 0);
    server.reset();
    server = std::make_unique<RunningServer>(commands, path());
    EXPECT_EQ(link.exchange(request_, answer_), 0);
}

TEST_F(SocketLinkReconnect, NeverSendsARequestAgainThatWasHandedOver)
{
    FakePeer peer(path());
    SocketLink link(path(), patient());

    const int code = exchangeWhile(link, [&] {
        auto stream = peer.accept();
        stream.receive(kRequestSize);
    });

    EXPECT_EQ(code, BackendLink::kUnreachable);
    EXPECT_EQ(link.lastFailure(), "it closed the connection without an answer");
    EXPECT_FALSE(peer.hasPending());
}

TEST_F(SocketLinkReconnect, SendsARequestAgainThatWasHandedOverInPartOnly)
{
    FakePeer peer(path());
    SocketLink link(path(), patient());
    auto stream = std::make_unique<Stream>(backend::FileDescriptor());
    ASSERT_EQ(exchangeWhile(link,
                            [&] {
                                *stream = peer.accept();
                                answer(*stream, 1);
                            }),
              0);
    makeLarge(request_);
    const std::size_t whole = kRequestSize + std::size_t{50} * 60014;

    const int code = exchangeWhile(link, [&] {
        stream->receive(100);
        stream->close();
        auto second = peer.accept();
        EXPECT_EQ(second.receive(whole).size(), whole);
        second.send(Wire::reply(2, kCommand, "at last").bytes());
    });

    EXPECT_EQ(code, 0);
    EXPECT_EQ(textOf(answer_, 1), "at last");
}

TEST_F(SocketLinkReconnect, GivesUpWhenAFreshConnectionIsClosedToo)
{
    FakePeer peer(path());
    SocketLink link(path(), patient());
    makeLarge(request_);

    const int code = exchangeWhile(link, [&] { peer.accept().receive(100); });

    EXPECT_EQ(code, BackendLink::kUnreachable);
    EXPECT_FALSE(peer.hasPending());
}

TEST_F(SocketLinkReconnect, TakesNoAnswerThatCameWhenNoneWasDue)
{
    FakePeer peer(path());
    SocketLink link(path(), patient());
    auto first = std::make_unique<Stream>(backend::FileDescriptor());
    ASSERT_EQ(exchangeWhile(link,
                            [&] {
                                *first = peer.accept();
                                first->receive(kRequestSize);
                                first->send(Wire::reply(1, kCommand, "first")
                                                .append(Wire::reply(2, kCommand, "forged"))
                                                .bytes());
                            }),
              0);

    const int code = exchangeWhile(link, [&] {
        auto second = peer.accept();
        answer(second, 2);
    });

    EXPECT_EQ(code, 0);
    ASSERT_EQ(answer_.oRecords.size(), 2U);
    EXPECT_EQ(textOf(answer_, 1), "answer 2");
}

TEST_F(SocketLinkReconnect, LogsOnlyTheChangesOfItsState)
{
    const LogCapture log;
    SocketLink link(path(), patient());

    link.exchange(request_, answer_);
    link.exchange(request_, answer_);
    {
        FakePeer peer(path());
        auto stream = std::make_unique<Stream>(backend::FileDescriptor());
        exchangeWhile(link, [&] {
            *stream = peer.accept();
            answer(*stream, 3);
        });
        expectAnswered(link, *stream, 4);
    }
    link.exchange(request_, answer_);
    link.exchange(request_, answer_);

    EXPECT_EQ(log.linesWith("back end unix:" + path() + " is down: "), 2) << log.text();
    EXPECT_EQ(log.linesWith("back end unix:" + path() + " is up"), 1) << log.text();
    EXPECT_THAT(log.text(), HasSubstr("No such file or directory; commands fail until"));
}

TEST_F(SocketLinkReconnect, RefusesAPathThatNoSocketCanHave)
{
    SocketLink link(std::string(200, 'x'), patient());

    EXPECT_EQ(link.exchange(request_, answer_), BackendLink::kUnreachable);
    EXPECT_THAT(link.lastFailure(), HasSubstr("choose a shorter one"));
}

}  // namespace
