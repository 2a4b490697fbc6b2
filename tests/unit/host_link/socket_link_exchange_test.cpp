#include "backend/command_server.h"
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
using testing::HasSubstr;

using SocketLinkExchange = SocketLinkTest;

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

TEST_F(SocketLinkExchange, NamesItselfAsTheUserDid)
{
    EXPECT_EQ(SocketLink("/run/talvik/backend.sock").name(), "unix:/run/talvik/backend.sock");
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

}  // namespace
