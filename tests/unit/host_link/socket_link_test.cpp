#include "host/link/socket_link.h"

#include "backend/command_server.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/wire.h"
#include "tests/unit/host_link/link_kit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

namespace {

using namespace talvik;
using namespace talvik::test;
using namespace std::chrono_literals;
using testing::HasSubstr;

constexpr std::uint64_t kCommand = 4001;
constexpr std::size_t kRequestSize = 38;

/// Never reached in a test that passes.
SocketLimits patient()
{
    SocketLimits limits;
    limits.connect = std::chrono::milliseconds(kWaitMs);
    limits.exchange = std::chrono::milliseconds(kWaitMs);
    return limits;
}

/// Reached soon.
SocketLimits hasty()
{
    SocketLimits limits;
    limits.connect = 50ms;
    limits.exchange = 50ms;
    limits.penalty = 1h;
    return limits;
}

class SocketLinkTest : public testing::Test {
protected:
    SocketLinkTest() { addRecord(request_, kCommand); }

    std::string path() const { return dir_.path("socket"); }

    /// One exchange of `link`, while `peer` does its part on the test's thread.
    template <typename Peer>
    int exchangeWhile(SocketLink& link, Peer peer)
    {
        int code = -1;
        std::thread exchange([&] { code = link.exchange(request_, answer_); });
        try {
            peer();
        } catch (const std::exception& error) {
            ADD_FAILURE() << "the peer failed: " << error.what();
        }
        exchange.join();
        return code;
    }

    /// A successful exchange over `stream`.
    void expectAnswered(SocketLink& link, Stream& stream, std::uint32_t number)
    {
        EXPECT_EQ(exchangeWhile(link, [&] { answer(stream, number); }), 0);
    }

    static void answer(Stream& stream, std::uint32_t number)
    {
        EXPECT_EQ(stream.receive(kRequestSize), Wire::request(number, kCommand).bytes());
        stream.send(Wire::reply(number, kCommand, "answer " + std::to_string(number)).bytes());
    }

    TempDir dir_;
    Package request_;
    Package answer_;
};

using SocketLinkExchange = SocketLinkTest;
using SocketLinkReconnect = SocketLinkTest;
using SocketLinkTimeout = SocketLinkTest;

TEST_F(SocketLinkExchange, AppendsTheAnswersRecordsAndTakesItsHeader)
{
    FakePeer peer(path());
    SocketLink link(path(), patient());
    addRecord(answer_, 99);

    const int code = exchangeWhile(link, [&] {
        auto stream = peer.accept();
        answer(stream, 1);
    });

    EXPECT_EQ(code, 0);
    ASSERT_EQ(answer_.oRecords.size(), 2U);
    EXPECT_EQ(answer_[0]->ullRecordId, 99U);
    EXPECT_EQ(textOf(answer_, 1), "answer 1");
    EXPECT_EQ(answer_.oHead.usShort1, 2U);
    EXPECT_EQ(answer_.oHead.uiWord2, 1U);
    EXPECT_EQ(answer_.oHead.uiWord3, 0U);
}

TEST_F(SocketLinkExchange, KeepsOneConnectionAndCountsItsExchanges)
{
    FakePeer peer(path());
    SocketLink link(path(), patient());

    EXPECT_FALSE(peer.hasPending()) << "nothing is to be sent yet";
    std::unique_ptr<Stream> stream;
    EXPECT_EQ(exchangeWhile(link,
                            [&] {
                                stream = std::make_unique<Stream>(peer.accept());
                                answer(*stream, 1);
                            }),
              0);
    expectAnswered(link, *stream, 2);
    expectAnswered(link, *stream, 3);

    EXPECT_FALSE(peer.hasPending());
}

TEST_F(SocketLinkExchange, CarriesTheAttributeAndLeavesTheRequestsWordsAlone)
{
    FakePeer peer(path());
    SocketLink link(path(), patient());
    request_.oHead.uiWord2 = 0xAA;
    request_.oHead.uiWord3 = 42;
    request_.oHead.usShort1 = 0xBB;

    const int code = exchangeWhile(link, [&] {
        auto stream = peer.accept();
        EXPECT_EQ(stream.receive(kRequestSize),
                  Wire::header(1, 1, 42, 10).u64(kCommand).u16(0).bytes());
        stream.send(Wire::reply(1, kCommand, "x").bytes());
    });

    EXPECT_EQ(code, 0);
    EXPECT_EQ(request_.oHead.uiWord2, 0xAAU);
    EXPECT_EQ(request_.oHead.uiWord3, 42U);
    EXPECT_EQ(request_.oHead.usShort1, 0xBBU);
}

TEST_F(SocketLinkExchange, PassesTheBackEndsCodeUpAndLeavesTheAnswerAsItWas)
{
    FakePeer peer(path());
    SocketLink link(path(), patient());
    addRecord(answer_, 99);

    const int code = exchangeWhile(link, [&] {
        auto stream = peer.accept();
        stream.receive(kRequestSize);
        stream.send(Wire::header(2, 1, 0x1234, 10).u64(7).u16(0).bytes());
    });

    EXPECT_EQ(code, 0x1234);
    EXPECT_EQ(answer_.oRecords.size(), 1U);
    EXPECT_EQ(answer_.oHead.uiWord3, 0xFFFFFFFFU);
    EXPECT_EQ(link.lastFailure(), "");
}

TEST_F(SocketLinkExchange, TakesAnAnswerThatComesByteByByte)
{
    FakePeer peer(path());
    SocketLink link(path(), patient());

    const int code = exchangeWhile(link, [&] {
        auto stream = peer.accept();
        stream.receive(kRequestSize);
        const auto reply = Wire::reply(1, kCommand, "in pieces");
        for (const auto byte : reply.bytes()) {
            stream.send({byte});
        }
    });

    EXPECT_EQ(code, 0);
    EXPECT_EQ(textOf(answer_), "in pieces");
}

TEST_F(SocketLinkExchange, RefusesToSendARequestThatNoPackageCanHold)
{
    FakePeer peer(path());
    SocketLink link(path(), patient());
    auto cell = std::make_unique<CTLVCell>();
    const std::string value(65535, 'x');
    cell->set_i(CTLVCell::TLV_OCTETS, 1, value.data(), value.size());
    request_[0]->append(cell.release());

    EXPECT_EQ(link.exchange(request_, answer_), BackendLink::kProtocolError);
    EXPECT_THAT(link.lastFailure(), HasSubstr("65539 bytes of cells"));
    EXPECT_FALSE(peer.hasPending());
}

TEST_F(SocketLinkExchange, ServesManyThreadsEachWithItsOwnAnswer)
{
    backend::CommandServer commands;
    for (std::uint64_t number = 1; number <= 8; ++number) {
        commands.add(number, "C" + std::to_string(number),
                     [number](const Package&, Package& reply) {
                         addRecord(reply, number);
                         return backend::result::kSuccess;
                     });
    }
    const RunningServer server(commands, path());
    SocketLink link(path(), patient());
    std::atomic<int> right{0};

    std::vector<std::thread> threads;
    for (std::uint64_t number = 1; number <= 8; ++number) {
        threads.emplace_back([&, number] {
            for (int i = 0; i < 50; ++i) {
                Package request;
                Package answer;
                addRecord(request, number);
                const bool good = link.exchange(request, answer) == 0 &&
                                  answer.oRecords.size() == 1 && answer[0]->ullRecordId == number;
                right += good ? 1 : 0;
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(right, 8 * 50);
}

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

/// More than a socket's buffers hold, so that it cannot be handed over without the peer.
void makeLarge(Package& request)
{
    const std::string value(60000, 'x');
    for (int i = 0; i < 50; ++i) {
        addRecord(request, kCommand);
        auto cell = std::make_unique<CTLVCell>();
        cell->set_i(CTLVCell::TLV_OCTETS, 1, value.data(), value.size());
        request.oRecords.back()->append(cell.release());
    }
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
    const std::size_t whole = kRequestSize + 50 * 60014;

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

struct BadReply {
    const char* name;
    Wire wire;

    friend std::ostream& operator<<(std::ostream& os, const BadReply& row)
    {
        return os << row.name;
    }
};

class SocketLinkBadReply : public SocketLinkTest, public testing::WithParamInterface<BadReply> {};

TEST_P(SocketLinkBadReply, FailsTheExchangeAndStartsTheNextOneAfresh)
{
    FakePeer peer(path());
    SocketLink link(path(), patient());
    addRecord(answer_, 99);

    const int code = exchangeWhile(link, [&] {
        auto stream = peer.accept();
        stream.receive(kRequestSize);
        stream.send(GetParam().wire.bytes());
    });

    EXPECT_EQ(code, BackendLink::kProtocolError);
    ASSERT_EQ(answer_.oRecords.size(), 1U) << "the answer must stay as it was";
    EXPECT_EQ(answer_.oHead.uiWord2, 0U);
    EXPECT_NE(link.lastFailure(), "");
    EXPECT_EQ(exchangeWhile(link,
                            [&] {
                                auto stream = peer.accept();
                                answer(stream, 2);
                            }),
              0);
}

const BadReply kBadReplies[] = {
    {"OfAnotherExchange", Wire::reply(0, kCommand, "late")},
    {"OfTheNextExchange", Wire::reply(2, kCommand, "early")},
    {"OfKindRequest", Wire::header(1, 1, 0, 0)},
    {"OfKindNotification", Wire::header(3, 1, 0, 0)},
    {"OfKindAcknowledgement", Wire::header(4, 1, 0, 0)},
    {"OfAnUnknownKind", Wire::header(0, 1, 0, 0)},
    {"WithAWrongMagic", Wire().u32(0x55555554)},
    {"WithAWrongVersion", Wire().u32(0x55555555).u32(2)},
    {"ThatEndsInTheHeader", Wire::reply(1, kCommand, "x").truncate(27)},
    {"ThatEndsInARecord", Wire::reply(1, kCommand, "x").truncate(35)},
    {"ThatPromisesFourGibibytes", Wire::header(2, 1, 0, 0xFFFFFFFF)},
    {"WhoseRecordsDoNotParse", Wire::header(2, 1, 0, 10).u64(1).u16(1)},
    {"WithACellOfUnknownType", Wire::header(2, 1, 0, 14).u64(1).u16(4).u16(0x1A).u16(0)},
};

INSTANTIATE_TEST_SUITE_P(Wire, SocketLinkBadReply, testing::ValuesIn(kBadReplies),
                         [](const auto& row) { return row.param.name; });

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

TEST_F(SocketLinkExchange, NamesItselfAsTheUserDid)
{
    EXPECT_EQ(SocketLink("/run/talvik/backend.sock").name(), "unix:/run/talvik/backend.sock");
}

TEST_F(SocketLinkReconnect, RefusesAPathThatNoSocketCanHave)
{
    SocketLink link(std::string(200, 'x'), patient());

    EXPECT_EQ(link.exchange(request_, answer_), BackendLink::kUnreachable);
    EXPECT_THAT(link.lastFailure(), HasSubstr("choose a shorter one"));
}

}  // namespace
