#include "tests/unit/host_snmp/trap_sender_kit.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// The address sanitizer and what comes with it.
#ifdef __SANITIZE_ADDRESS__
#define SKIP_IF_SANITIZED(reason) GTEST_SKIP() << "not under the sanitizer: " << (reason)
#else
#define SKIP_IF_SANITIZED(reason) static_cast<void>(0)
#endif

namespace {

using talvik::SocketAddress;
using talvik::Syntax;
using talvik::test::parseMessage;
using talvik::test::textAt;
using talvik::test::UdpReceiver;
using testing::HasSubstr;

/// What one message of version 2c is answered with.
std::string answerTo(std::string inform)
{
    inform.at(inform.find('\xA6')) = '\xA2';
    return inform;
}

/// Nothing can be opened while it lives.
class NoDescriptors {
public:
    NoDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &former_);
        auto none = former_;
        none.rlim_cur = 3;
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &former_); }

    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit former_{};
};

/// Puts a socket that takes nothing in the place of another one while it lives.
class FailingSocket {
public:
    /// In the place of the socket that has this port.
    explicit FailingSocket(const SocketAddress& other) : fd_(find(other)), kept_(dup(fd_))
    {
        const int failing = socket(AF_UNIX, SOCK_DGRAM, 0);
        if (failing < 0 || kept_ < 0 || dup2(failing, fd_) < 0) {
            throw std::runtime_error("no failing socket");
        }
        close(failing);
    }
    ~FailingSocket()
    {
        dup2(kept_, fd_);
        close(kept_);
    }

    FailingSocket(const FailingSocket&) = delete;
    FailingSocket& operator=(const FailingSocket&) = delete;

private:
    static in_port_t portOf(const SocketAddress& address)
    {
        return reinterpret_cast<const sockaddr_in&>(address.storage).sin_port;
    }

    static int find(const SocketAddress& other)
    {
        constexpr int kDescriptors = 1024;
        for (int fd = 3; fd < kDescriptors; ++fd) {
            SocketAddress own;
            own.length = sizeof(own.storage);
            if (getsockname(fd, own.get(), &own.length) == 0 && own.family() == AF_INET &&
                portOf(own) == portOf(other)) {
                return fd;
            }
        }
        return -1;
    }

    int fd_;
    int kept_;
};

/// What waits, for whom, how long, and what becomes of it.
class TrapFlow : public talvik::test::TrapSending {
protected:
    void useInforms(const std::string& more = "")
    {
        writeSettings(R"({"receivers": [{"address": "127.0.0.1", "inform": true)" + more + "}]}");
    }

    void send(const std::vector<tTrapDestInfo>& rows, int count)
    {
        for (int i = 0; i < count; ++i) {
            sender().send(trap(rows, std::to_string(i)), delivery_);
        }
    }

    /// About the alarm with that serial number, in either kind of alarm trap.
    void sendAbout(const std::vector<tTrapDestInfo>& rows, int serial, const std::string& title,
                   bool other = false)
    {
        const talvik::ObjectId usual{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 3, 1, 1, 9, 0};
        const talvik::ObjectId others{1, 3, 6, 1, 4, 1, 99999, 2, 251, 20, 1, 3, 9, 0};
        auto about = trap(rows, title);
        about.bindings.push_back({other ? others : usual, {Syntax::Gauge32, serial, ""}});
        sender().send(about, delivery_);
    }

    static std::string titleOf(const std::string& message, int position = 2)
    {
        const auto pdu = parseMessage(message);
        return pdu ? textAt(*pdu, position) : "no message";
    }

    /// Waits for a message while the sender is served.
    std::string receive()
    {
        return serve([this] { return receiver_.hasSomething(); }) ? receiver_.receive() : "";
    }

    /// Answers every inform; returns their titles.
    std::vector<std::string> answerUntil(std::size_t count)
    {
        std::vector<std::string> titles;
        const bool done = serve([&] {
            while (receiver_.hasSomething()) {
                const auto message = receiver_.receive();
                titles.push_back(titleOf(message));
                receiver_.answer(answerTo(message));
            }
            return status().answered >= count;
        });
        EXPECT_TRUE(done) << "answered: " << status().answered;
        return titles;
    }

    std::vector<tTrapDestInfo> rows() { return {row("1", receiver_)}; }
    std::vector<tTrapDestInfo> named(unsigned int port) { return {row("1", "nms.example", port)}; }

    void resolve()
    {
        script_.answer("nms.example", {talvik::LookupOutcome::Found, {"127.0.0.1"}, ""});
        ASSERT_TRUE(script_.settle());
    }

    UdpReceiver receiver_;
    std::shared_ptr<int> delivery_ = std::make_shared<int>();
};

TEST_F(TrapFlow, KeepsAThousandForANameThatResolvesSoon)
{
    const auto rows = named(receiver_.port());
    sender().setReceivers(rows);
    ASSERT_TRUE(script_.waitForStart("nms.example"));
    send(rows, 1000);
    EXPECT_EQ(status().waiting, 1000u);

    resolve();
    sender().proceed(sender().deadline());

    EXPECT_EQ(status().sent, 1000u);
    EXPECT_EQ(status().givenUp + status().failed + status().waiting, 0u);
    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(TrapFlow, DeliversAThousandInformsToAReceiverThatAnswers)
{
    useInforms(R"(, "timeoutMs": 10000)");
    sender().setReceivers(rows());
    send(rows(), 1000);
    EXPECT_EQ(status().waiting, 1000u);

    EXPECT_EQ(answerUntil(1000).size(), 1000u);

    EXPECT_EQ(status().givenUp, 0u);
    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(TrapFlow, GivesUpTheOldestBeyond512WhenNothingArrivesFor10s)
{
    useInforms(R"(, "timeoutMs": 60000)");
    sender().setReceivers(rows());
    send(rows(), 1000);
    const auto start = Clock::now();

    sender().proceed(start + std::chrono::seconds(9));
    EXPECT_EQ(status().givenUp, 0u);
    EXPECT_GT(sender().deadline(), start + std::chrono::seconds(9));
    EXPECT_LT(sender().deadline(), start + std::chrono::seconds(11));
    sender().proceed(start + std::chrono::seconds(11));

    EXPECT_EQ(status().givenUp, 1000u - 32 - 512);
    EXPECT_EQ(status().waiting, 32u + 512);
    ASSERT_EQ(log_.lines().size(), 1u);
    EXPECT_THAT(log_.lines()[0], HasSubstr("notifications wait for it already"));
    EXPECT_GT(sender().deadline(), start + std::chrono::hours(1)) << "there is nothing to do";
}

TEST_F(TrapFlow, KeepsNoMoreThan2048ForOneReceiver)
{
    sender().setReceivers(named(9));

    send(named(9), 2048 + 3);

    EXPECT_EQ(status().waiting, 2048u);
    EXPECT_EQ(status().givenUp, 3u);
    EXPECT_EQ(delivery_.use_count(), 1 + 2048);
}

TEST_F(TrapFlow, GivesNothingUpWhileAnswersCome)
{
    useInforms(R"(, "timeoutMs": 60000)");
    sender().setReceivers(rows());
    send(rows(), 1000);
    const auto start = Clock::now();
    sender().proceed(start + std::chrono::seconds(9));
    receiver_.answer(answerTo(receiver_.receive()));
    ASSERT_TRUE(talvik::test::serveUntil([] {}, [this] { return status().answered == 1; }));

    sender().proceed(start + std::chrono::seconds(11));

    EXPECT_EQ(status().givenUp, 0u);
    EXPECT_EQ(status().waiting, 999u);
}

TEST_F(TrapFlow, SharesTheRoomAmongReceiversWhenTooMuchWaitsOverAll)
{
    std::vector<tTrapDestInfo> many;
    for (int i = 0; i < 1024; ++i) {
        many.push_back(row(std::to_string(i), "nms.example", 9));
    }
    sender().setReceivers(many);
    for (int i = 0; i < 64; ++i) {
        sender().send(trap(many), nullptr);
    }
    EXPECT_EQ(status(0).waiting, 64u);
    const std::vector<tTrapDestInfo> first{many[0]};

    send(first, 10);

    EXPECT_EQ(status(0).waiting, 64u);
    EXPECT_EQ(status(0).givenUp, 10u);
    EXPECT_EQ(status(1).givenUp, 0u);
}

TEST_F(TrapFlow, WaitsUntilTheSystemCanSendATrap)
{
    sender().setReceivers(rows());
    SKIP_IF_SANITIZED("it looks at types, for which it needs descriptors");
    {
        const NoDescriptors none;
        send(rows(), 2);
    }
    EXPECT_EQ(status().waiting, 2u);
    EXPECT_EQ(status().failed, 0u);
    EXPECT_THAT(status().state,
                HasSubstr("cannot be sent to: Too many open files; notifications wait"));
    EXPECT_LT(sender().deadline(), Clock::now() + std::chrono::seconds(1));

    sender().proceed(sender().deadline());

    EXPECT_EQ(titleOf(receiver_.receive()), "0");
    EXPECT_EQ(titleOf(receiver_.receive()), "1");
    EXPECT_EQ(status().state, "ok");
    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(TrapFlow, WaitsUntilTheSystemCanSendAnInform)
{
    useInforms();
    sender().setReceivers(rows());
    SKIP_IF_SANITIZED("it looks at types, for which it needs descriptors");
    {
        const NoDescriptors none;
        send(rows(), 1);
    }
    EXPECT_EQ(status().waiting, 1u);
    EXPECT_EQ(status().failed, 0u);

    sender().proceed(sender().deadline());

    EXPECT_EQ(answerUntil(1).size(), 1u);
}

TEST_F(TrapFlow, SendsAnInformAgainWhoseRetryTheSystemDidNotTake)
{
    SKIP_IF_SANITIZED("the SNMP library loses 104 octets of what it could not send again");
    useInforms(R"(, "timeoutMs": 200)");
    sender().setReceivers(rows());
    send(rows(), 1);
    ASSERT_NE(receiver_.receive(), "");
    {
        const FailingSocket failing(receiver_.sender());
        ASSERT_TRUE(talvik::test::serveUntil([] {}, [this] { return status().state != "ok"; }));
    }
    EXPECT_EQ(status().state, "cannot be sent to: Invalid argument");
    EXPECT_EQ(status().waiting, 1u);

    EXPECT_EQ(answerUntil(1).size(), 1u);

    EXPECT_EQ(status().sent, 1u) << "it is the same inform";
    EXPECT_EQ(status().givenUp, 0u);
    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(TrapFlow, CountsWhatTheSystemCouldNotSendFor10s)
{
    sender().setReceivers(rows());
    SKIP_IF_SANITIZED("it looks at types, for which it needs descriptors");
    const NoDescriptors none;
    send(rows(), 1);

    sender().proceed(Clock::now() + std::chrono::seconds(11));

    EXPECT_EQ(status().failed, 1u);
    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(TrapFlow, GoesOnByTheOtherColumnsOfARow)
{
    sender().setReceivers(named(9));
    send(named(9), 2);
    const std::vector<tTrapDestInfo> edited{row("2", "127.0.0.9", 9), row("1", receiver_, 1)};

    sender().setReceivers(edited);
    sender().proceed(sender().deadline());

    ASSERT_EQ(status(1).sent, 2u);
    const auto first = parseMessage(receiver_.receive());
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->command, SNMP_MSG_TRAP);
    EXPECT_EQ(titleOf(receiver_.receive(), 0), "1") << "a version 1 trap has its variables only";
    EXPECT_EQ(status(0).sent + status(0).waiting, 0u);
    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(TrapFlow, SendsInformsOnTheirWayByTheOtherColumnsOfARow)
{
    useInforms(R"(, "timeoutMs": 60000)");
    UdpReceiver former;
    sender().setReceivers({row("1", former)});
    send({row("1", former)}, 40);
    ASSERT_EQ(titleOf(former.receive()), "0");

    sender().setReceivers(rows());
    sender().send(trap(rows(), "40"), delivery_);
    const auto titles = answerUntil(41);

    ASSERT_EQ(titles.size(), 41u);
    for (std::size_t i = 0; i < titles.size(); ++i) {
        EXPECT_EQ(titles[i], std::to_string(i));
    }
    EXPECT_EQ(status().sent, 41u);
    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(TrapFlow, HoldsBackInformsAboutAnAlarmThatIsOnItsWay)
{
    useInforms(R"(, "timeoutMs": 60000)");
    sender().setReceivers(rows());

    sendAbout(rows(), 7, "raised");
    sendAbout(rows(), 7, "cleared");
    sendAbout(rows(), 8, "other alarm");
    sendAbout(rows(), 7, "raised again", true);
    sendAbout(rows(), 0, "test");
    sendAbout(rows(), 0, "test again");

    EXPECT_EQ(status().sent, 4u);
    const auto raised = receiver_.receive();
    EXPECT_EQ(titleOf(raised), "raised");
    EXPECT_EQ(titleOf(receiver_.receive()), "other alarm");
    EXPECT_EQ(titleOf(receiver_.receive()), "test");
    EXPECT_EQ(titleOf(receiver_.receive()), "test again");
    receiver_.answer(answerTo(raised));
    const auto cleared = receive();
    EXPECT_EQ(titleOf(cleared), "cleared");
    EXPECT_EQ(status().sent, 5u);
    receiver_.answer(answerTo(cleared));
    EXPECT_EQ(titleOf(receive()), "raised again");
}

TEST_F(TrapFlow, EncodesAnewWhatHadToWait)
{
    UdpReceiver ready;
    const std::vector<tTrapDestInfo> both{row("1", ready),
                                          row("2", "nms.example", receiver_.port())};
    sender().setReceivers(both);
    ASSERT_TRUE(script_.waitForStart("nms.example"));
    sender().send(trap(both), nullptr);
    const auto first = parseMessage(ready.receive());
    ASSERT_NE(first, nullptr);

    resolve();
    sender().proceed(sender().deadline());

    const auto second = parseMessage(receiver_.receive());
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second->reqid, first->reqid) << "a message was kept for it";
}

}  // namespace
