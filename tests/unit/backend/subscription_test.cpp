#include "backend/back_end.h"
#include "backend/server_thread.h"
#include "host/platform/durable_database.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/alarm_kit.h"
#include "tests/unit/backend/program.h"
#include "tests/unit/backend/socket_kit.h"

#include <gmock/gmock.h>

#include <optional>

namespace {

using namespace talvik::test;
using namespace talvik::backend;
using namespace std::chrono_literals;
using talvik::DeviceConfigFile;
using talvik::DurableDatabase;

constexpr std::uint64_t kRaise = 4010;
constexpr std::uint64_t kResend = 4012;
constexpr std::uint64_t kSubscribe = 4013;
constexpr std::uint64_t kGetWwn = 4001;
constexpr std::uint64_t kTime = 1234;

const Alarm kAlarm{5, 3, kTime, "CTE0,B"};

/// A server with all that belongs to the back end; what tests do with the store directly, the
/// server is told of as of any other thread's doing.
class Subscription : public testing::Test {
protected:
    void start(const ServerLimits& limits = ServerLimits())
    {
        server_.emplace(backEnd_.commands(), path(), &backEnd_, limits);
    }

    Stream client() const { return Stream::connectedTo(path()); }

    Stream subscriber() const
    {
        auto host = client();
        host.send(Wire::request(1, kSubscribe).bytes());
        EXPECT_EQ(host.receive(28), Wire::refusal(1, 0).bytes());
        return host;
    }

    void raise(std::uint32_t count)
    {
        for (; count != 0; --count) {
            backEnd_.alarms().raise(kAlarm);
        }
    }

    static Wire packageOf(std::uint32_t number, std::uint32_t serial)
    {
        return Wire::package(3, number, 0xFFFFFFFF, faultOf(serial, kAlarm));
    }

    static void expectPackages(Stream& host, std::uint32_t firstNumber, std::uint32_t firstSerial,
                               std::uint32_t count)
    {
        Wire expected;
        for (std::uint32_t i = 0; i < count; ++i) {
            expected.append(packageOf(firstNumber + i, firstSerial + i));
        }
        EXPECT_TRUE(host.receive(expected.bytes().size()) == expected.bytes());
    }

    static void acknowledge(Stream& host, std::uint32_t number)
    {
        host.send(Wire::acknowledgement(number).bytes());
    }

    static void expectServed(Stream& other)
    {
        other.send(Wire::request(7, kGetWwn).bytes());
        EXPECT_EQ(other.receive(59), Wire::reply(7, kGetWwn, "2100a1b2c3d4e5f6").bytes());
    }

    /// Waits until the outbox holds `count` notifications.
    bool outboxBecomes(std::size_t count)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kWaitMs);
        while (std::chrono::steady_clock::now() < end) {
            if (outboxOf(backEnd_.alarms()).size() == count) {
                return true;
            }
            std::this_thread::yield();
        }
        return false;
    }

    std::string path() const { return dir_.path("socket"); }

    TempDir dir_;
    BackEnd backEnd_{DeviceConfigFile::load(sampleDeviceFile()), DurableDatabase::kInMemory};
    std::optional<ServerThread> server_;
};

TEST_F(Subscription, CarriesWhatWaitedAndWhatComesLater)
{
    raise(100);
    start();
    auto host = subscriber();
    expectPackages(host, 1, 1, 100);

    raise(2);

    expectPackages(host, 101, 101, 2);
}

TEST_F(Subscription, CarriesWhatAnotherClientReports)
{
    start();
    auto host = subscriber();
    auto other = client();

    other.send(Wire::package(1, 9, 0xFFFFFFFF,
                             Wire::record(kRaise, Wire()
                                                      .numberCell(1, 5, 8)
                                                      .numberCell(2, 3, 4)
                                                      .numberCell(4, kTime, 8)
                                                      .textCell(8, "CTE0,B")))
                   .bytes());

    expectPackages(host, 1, 1, 1);
    EXPECT_EQ(other.receive(46),
              Wire::package(2, 9, 0, Wire::record(kRaise, Wire().numberCell(3, 1, 4))).bytes());
}

TEST_F(Subscription, CarriesActiveAlarmsAgainOnRequest)
{
    raise(12);
    start();
    auto host = subscriber();
    expectPackages(host, 1, 1, 12);
    auto other = client();

    other.send(Wire::request(9, kResend).bytes());

    EXPECT_EQ(other.receive(46),
              Wire::package(2, 9, 0, Wire::record(kResend, Wire().numberCell(9, 12, 4))).bytes());
    expectPackages(host, 13, 1, 12);
}

TEST_F(Subscription, HoldsBackWhatIsBeyondTheWindow)
{
    raise(1500);
    start();
    auto host = subscriber();
    auto other = client();
    expectPackages(host, 1, 1, 1024);
    expectServed(other);  // the server has gone round meanwhile
    unsigned char byte = 0;
    EXPECT_EQ(::recv(host.fd(), &byte, 1, MSG_DONTWAIT), -1);

    acknowledge(host, 10);
    expectPackages(host, 1025, 1025, 10);
    acknowledge(host, 1034);

    expectPackages(host, 1035, 1035, 466);
    EXPECT_TRUE(outboxBecomes(466));
}

TEST_F(Subscription, TakesAcknowledgementsInAnyPieces)
{
    raise(4);
    start();
    auto host = subscriber();
    auto other = client();
    expectPackages(host, 1, 1, 4);

    const auto pieces = Wire::acknowledgement(1).append(Wire::acknowledgement(2)).bytes();
    for (const auto byte : pieces) {
        expectServed(other);  // each byte is read on its own
        host.send({byte});
    }
    EXPECT_TRUE(outboxBecomes(2));
    Wire many;
    for (int i = 0; i < 5000; ++i) {
        many.append(Wire::acknowledgement(3));
    }
    host.send(many.append(Wire::acknowledgement(4)).bytes());

    EXPECT_TRUE(outboxBecomes(0));
}

TEST_F(Subscription, TakesAcknowledgementsThatCameRightBehindTheRequest)
{
    raise(3);
    start();
    auto host = client();

    host.send(Wire::request(1, kSubscribe).append(Wire::acknowledgement(1)).bytes());

    EXPECT_EQ(host.receive(28), Wire::refusal(1, 0).bytes());
    EXPECT_TRUE(host.closedByPeer()) << "nothing was sent yet";
    auto next = subscriber();
    expectPackages(next, 1, 1, 3);
}

TEST_F(Subscription, SendsAgainToTheNextSubscriberWhatWasNotAcknowledged)
{
    raise(5);
    start();
    {
        auto host = subscriber();
        expectPackages(host, 1, 1, 5);
        acknowledge(host, 2);
    }
    ASSERT_TRUE(outboxBecomes(3)) << "the last words of a subscriber that left count";
    raise(1);

    for (int i = 0; i < 2; ++i) {
        auto host = client();
        Bytes reply;
        do {  // until the back end has seen that the other one left
            host.send(Wire::request(1, kSubscribe).bytes());
            reply = host.receive(28);
        } while (reply == Wire::refusal(1, 0x1000017).bytes());
        EXPECT_EQ(reply, Wire::refusal(1, 0).bytes());
        expectPackages(host, 1, 3, 4);
    }
}

TEST_F(Subscription, IsForOneAtATime)
{
    raise(1);
    start();
    auto first = subscriber();
    auto second = client();

    second.send(Wire::request(2, kSubscribe).bytes());

    EXPECT_EQ(second.receive(28), Wire::refusal(2, 0x1000017).bytes());
    expectServed(second);
    expectPackages(first, 1, 1, 1);
    first.stopSending();
    EXPECT_TRUE(first.closedByPeer());
    second.send(Wire::request(3, kSubscribe).bytes());
    EXPECT_EQ(second.receive(28), Wire::refusal(3, 0).bytes());
    expectPackages(second, 1, 1, 1);
}

TEST_F(Subscription, EndsWhenWhatWasNotSentIsAcknowledged)
{
    raise(2);
    start();
    auto host = subscriber();
    expectPackages(host, 1, 1, 2);

    host.send(Wire::acknowledgement(1).append(Wire::acknowledgement(3)).bytes());

    EXPECT_TRUE(host.closedByPeer());
    EXPECT_TRUE(outboxBecomes(1)) << "what came before it holds";
}

TEST_F(Subscription, EndsWithARequest)
{
    start();
    auto host = subscriber();

    host.send(Wire::request(2, kGetWwn).bytes());

    EXPECT_TRUE(host.closedByPeer());
}

TEST_F(Subscription, EndsWithHalfAnAcknowledgement)
{
    ServerLimits limits;
    limits.package = 50ms;
    start(limits);
    auto host = subscriber();
    auto other = client();

    host.send(Wire::acknowledgement(1).truncate(20).bytes());

    EXPECT_TRUE(host.closedByPeer());
    expectServed(other);
}

TEST_F(Subscription, EndsForOneWhoDoesNotReadWhileOthersAreServed)
{
    ServerLimits limits;
    limits.write = 200ms;
    for (int i = 0; i < 100; ++i) {
        backEnd_.alarms().raise({5, 3, kTime, std::string(32768, 'p')});
    }
    start(limits);
    auto deaf = client();
    auto other = client();

    deaf.send(Wire::request(1, kSubscribe).bytes());
    expectServed(other);
    deaf.waitForHangUp();

    expectServed(other);
    auto next = subscriber();
    EXPECT_EQ(next.receive(28).size(), 28U);
    EXPECT_EQ(outboxOf(backEnd_.alarms()).size(), 100U);
}

TEST_F(Subscription, StaysWithOneWhoReadsAndAcknowledgesNothing)
{
    ServerLimits limits;
    limits.write = 1ms;
    limits.package = 1ms;
    start(limits);
    auto host = subscriber();
    auto other = client();
    raise(1);
    expectPackages(host, 1, 1, 1);

    const auto end = std::chrono::steady_clock::now() + 20 * limits.write;
    while (std::chrono::steady_clock::now() < end) {
        expectServed(other);
    }

    raise(1);
    expectPackages(host, 2, 2, 1);
}

TEST_F(Subscription, OutlivesTheServer)
{
    raise(3);
    start();
    {
        auto host = subscriber();
        expectPackages(host, 1, 1, 3);
        acknowledge(host, 1);
        ASSERT_TRUE(outboxBecomes(2));
        server_.reset();
        EXPECT_TRUE(host.closedByPeer());
    }

    start();

    auto host = subscriber();
    expectPackages(host, 1, 2, 2);
}

}  // namespace
