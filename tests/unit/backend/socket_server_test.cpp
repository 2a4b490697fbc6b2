#include "backend/socket_server.h"

#include "tests/support/temp_dir.h"
#include "tests/unit/backend/socket_kit.h"
#include "tests/unit/backend/wire.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>

#include <memory>
#include <vector>

namespace {

using namespace talvik::backend;
using namespace std::chrono_literals;
using talvik::test::RunningServer;
using talvik::test::Stream;
using talvik::test::TempDir;
using talvik::test::Wire;

constexpr std::uint64_t kEcho = 1;   // answers its record's identifier
constexpr std::uint64_t kLarge = 2;  // answers more than a socket's buffer holds
constexpr std::uint32_t kLargeRecords = 32;
constexpr std::uint32_t kLargeRecordSize = 60014;
constexpr std::uint32_t kLargeReplySize = 28 + kLargeRecords * kLargeRecordSize;

void appendRecord(Package& reply, std::uint64_t id)
{
    auto record = std::make_unique<CTLVRecordV3>(id);
    reply.oRecords.push_back(record.get());
    record.release();
}

void appendLargeRecord(Package& reply, std::uint64_t id)
{
    const std::string value(kLargeRecordSize - 14, 'x');
    appendRecord(reply, id);
    auto cell = std::make_unique<CTLVCell>();
    cell->set_i(CTLVCell::TLV_OCTETS, 1, value.data(), value.size());
    reply.oRecords.back()->append(cell.get());
    cell.release();
}

CommandServer makeCommands()
{
    CommandServer commands;
    commands.add(kEcho, "ECHO", [](const Package&, Package& reply) {
        appendRecord(reply, kEcho);
        return result::kSuccess;
    });
    commands.add(kLarge, "LARGE", [](const Package&, Package& reply) {
        for (std::uint32_t i = 0; i < kLargeRecords; ++i) {
            appendLargeRecord(reply, kLarge);
        }
        return result::kSuccess;
    });
    return commands;
}

Wire echoReply(std::uint32_t exchange)
{
    return Wire::header(2, exchange, 0, 10).u64(kEcho).u16(0);
}

class SocketServerTest : public testing::Test {
protected:
    void start(const ServerLimits& limits = ServerLimits())
    {
        server_ = std::make_unique<RunningServer>(commands_, path(), limits);
    }

    Stream client() const { return Stream::connectedTo(path()); }
    std::string path() const { return dir_.path("socket"); }

    static void expectServed(Stream& client, std::uint32_t exchange = 5)
    {
        client.send(Wire::request(exchange, kEcho).bytes());
        EXPECT_EQ(client.receive(38), echoReply(exchange).bytes());
    }

    TempDir dir_;
    const CommandServer commands_ = makeCommands();
    std::unique_ptr<RunningServer> server_;
};

using SocketServer = SocketServerTest;

TEST_F(SocketServer, AnswersOneClientAfterTheOtherOnTheSameConnection)
{
    start();
    auto first = client();
    auto second = client();

    for (std::uint32_t exchange = 1; exchange < 4; ++exchange) {
        expectServed(first, exchange);
        expectServed(second, exchange);
    }
}

TEST_F(SocketServer, PutsARequestTogetherFromSingleBytes)
{
    start();
    auto fragmented = client();
    auto other = client();
    const auto request = Wire::request(9, kEcho).bytes();

    for (const auto byte : request) {
        expectServed(
            other);  // each byte is read on its own, since the server has gone round meanwhile
        fragmented.send({byte});
    }

    EXPECT_EQ(fragmented.receive(38), echoReply(9).bytes());
}

TEST_F(SocketServer, AnswersSeveralRequestsOfOneWriteInTheirOrder)
{
    start();
    auto talker = client();
    Wire requests;
    Wire replies;
    for (std::uint32_t exchange = 0; exchange < 3000; ++exchange) {
        requests.append(Wire::request(exchange, kEcho));
        replies.append(echoReply(exchange));
    }

    std::thread writer([&] { talker.send(requests.bytes()); });
    const auto received = talker.receive(replies.bytes().size());
    writer.join();

    EXPECT_EQ(received, replies.bytes());
}

TEST_F(SocketServer, DisconnectsAClientThatSendsGarbage)
{
    start();
    auto other = client();
    auto garbage = client();

    garbage.send({'G', 'E', 'T', ' ', '/'});

    EXPECT_TRUE(garbage.closedByPeer());
    expectServed(other);
}

TEST_F(SocketServer, DisconnectsAClientWhoseHeaderPromisesFourGibibytes)
{
    start();
    auto liar = client();

    liar.send(Wire::header(1, 1, 0, 0xFFFFFFFF).bytes());

    EXPECT_TRUE(liar.closedByPeer());
}

TEST_F(SocketServer, DisconnectsAClientThatSendsNoRequest)
{
    start();
    auto confused = client();

    confused.send(Wire::refusal(1, 0).bytes());

    EXPECT_TRUE(confused.closedByPeer());
}

TEST_F(SocketServer, DisconnectsAClientWhoseRecordsDoNotParse)
{
    start();
    auto confused = client();

    confused.send(Wire::header(1, 1, 0, 10).u64(kEcho).u16(1).bytes());

    EXPECT_TRUE(confused.closedByPeer());
}

TEST_F(SocketServer, GivesUpOnARequestThatNeverBecomesWhole)
{
    ServerLimits limits;
    limits.package = 50ms;
    start(limits);
    auto idle = client();
    auto liar = client();

    liar.send(Wire::header(1, 1, 0, 1000).u64(kEcho).bytes());

    EXPECT_TRUE(liar.closedByPeer());
    expectServed(idle);  // which has sent nothing for longer than the limit
}

TEST_F(SocketServer, ServesOthersWhileAClientDoesNotReadAndThenGivesUpOnIt)
{
    ServerLimits limits;
    limits.write = 200ms;
    start(limits);
    auto deaf = client();
    auto other = client();

    deaf.send(Wire::request(1, kLarge).bytes());
    expectServed(other);
    deaf.waitForHangUp();

    expectServed(other);
}

TEST_F(SocketServer, StopsReadingFromAClientThatDoesNotRead)
{
    start();
    auto deaf = client();
    auto other = client();
    const auto request = Wire::request(1, kLarge).bytes();

    deaf.send(request);
    expectServed(other);
    std::size_t taken = 0;
    while (taken < 1000000 && deaf.trySend(request)) {
        ++taken;
    }

    EXPECT_LT(taken, 1000000U) << "the server buffers without a bound";
    expectServed(other);
}

TEST_F(SocketServer, DeliversAReplyThatIsLargerThanTheSocketsBuffer)
{
    start();
    auto reader = client();

    reader.send(Wire::request(3, kLarge).bytes());
    const auto reply = reader.receive(kLargeReplySize);

    ASSERT_EQ(reply.size(), kLargeReplySize);
    const auto header = Wire::header(2, 3, 0, kLargeReplySize - 28).bytes();
    EXPECT_TRUE(std::equal(header.begin(), header.end(), reply.begin()));
    expectServed(reader);
}

TEST_F(SocketServer, AnswersAClientThatHasStoppedSending)
{
    start();
    auto halfClosed = client();

    halfClosed.send(Wire::request(3, kEcho).bytes());
    halfClosed.stopSending();

    EXPECT_EQ(halfClosed.receive(38), echoReply(3).bytes());
    EXPECT_TRUE(halfClosed.closedByPeer());
}

TEST_F(SocketServer, MakesRoomForOneMoreClientWithTheOneThatHasBeenIdleLongest)
{
    start();
    std::vector<Stream> clients;
    for (int i = 0; i < 16; ++i) {
        clients.push_back(client());
        expectServed(clients.back());
    }
    expectServed(clients[0]);

    auto next = client();

    expectServed(next);
    EXPECT_TRUE(clients[1].closedByPeer());
    for (std::size_t i = 0; i < clients.size(); ++i) {
        if (i != 1) {
            expectServed(clients[i]);
        }
    }
}

TEST_F(SocketServer, RefusesTheClientThatIsOneTooManyWhileNoneIsIdle)
{
    start();
    std::vector<Stream> clients;
    const auto request = Wire::request(5, kEcho).bytes();
    for (int i = 0; i < 16; ++i) {
        clients.push_back(client());
        expectServed(clients.back());
        clients.back().send({request.begin(), request.begin() + 1});
    }

    EXPECT_TRUE(client().closedByPeer());

    clients[3].send({request.begin() + 1, request.end()});
    EXPECT_EQ(clients[3].receive(38), echoReply(5).bytes());
    auto next = client();
    expectServed(next);
    EXPECT_TRUE(clients[3].closedByPeer());
}

TEST_F(SocketServer, SurvivesAClientThatLeavesInTheMiddle)
{
    start();
    {
        auto quitter = client();
        quitter.send(Wire::request(1, kLarge).truncate(30).bytes());
    }
    {
        auto quitter = client();
        quitter.send(Wire::request(1, kLarge).bytes());
    }

    auto other = client();
    expectServed(other);
}

TEST_F(SocketServer, ListensAgainAtOnceAfterItsEnd)
{
    start();
    auto before = client();
    expectServed(before);
    server_.reset();
    EXPECT_TRUE(before.closedByPeer());

    start();

    auto after = client();
    expectServed(after);
}

TEST(SocketServerPeer, TrustsItsOwnUserAndRootOnly)
{
    EXPECT_TRUE(isTrustedPeer(1000, 1000));
    EXPECT_TRUE(isTrustedPeer(0, 1000));
    EXPECT_FALSE(isTrustedPeer(1001, 1000));
    EXPECT_FALSE(isTrustedPeer(1000, 0));
}

/// In the child of a fork, as another user: connects and sends a request. Returns 0 when the server
/// hangs up without an answer.
int tryAsAnotherUser(const sockaddr_un& address, const Bytes& request)
{
    constexpr uid_t kNobody = 65534;
    if (::setuid(kNobody) != 0) {
        return 1;
    }
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::connect(fd, asSocketAddress(address), sizeof address) != 0) {
        return 2;
    }
    ::send(fd, request.data(), request.size(), MSG_NOSIGNAL);
    pollfd watched{fd, POLLIN, 0};
    unsigned char byte = 0;
    return ::poll(&watched, 1, talvik::test::kWaitMs) == 1 && ::recv(fd, &byte, 1, 0) <= 0 ? 0 : 3;
}

TEST_F(SocketServer, HangsUpOnAnotherUserEvenIfTheFileLetsItIn)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can take on another user";
    }
    start();
    ASSERT_EQ(::chmod(dir_.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(path().c_str(), 0666), 0);
    const auto address = unixAddress(path()).value();
    const auto request = Wire::request(1, kEcho).bytes();

    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::_exit(tryAsAnotherUser(address, request));
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);

    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
