#include "host/snmp/trap_sender.h"

#include "tests/unit/host_snmp/fake_engine.h"
#include "tests/unit/host_snmp/trap_sender_kit.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using talvik::test::communityOf;
using talvik::test::FakeEngine;
using talvik::test::parseMessage;
using talvik::test::responseTo;
using talvik::test::textAt;
using talvik::test::UdpReceiver;
using testing::HasSubstr;

const std::string kUser =
    R"({"name": "trapuser", "auth": "SHA-256", "authPassphrase": "authentication",)"
    R"( "privacy": "AES", "privacyPassphrase": "privacy-phrase"})";

class InformSending : public talvik::test::TrapSending {
protected:
    static std::string settings(const std::string& more, const std::string& user = kUser)
    {
        return R"({"users": [)" + user +
               R"(], "receivers": [{"address": "127.0.0.1", "inform": true)" + more + "}]}";
    }

    /// Waits for a message while the sender is served.
    std::string receive()
    {
        return serve([this] { return receiver_.hasSomething(); }) ? receiver_.receive() : "";
    }

    /// Finds the engine ID and returns what comes then.
    std::string receiveAfterDiscovery(const FakeEngine& engine)
    {
        auto probe = receive();
        EXPECT_FALSE(engine.isFor(probe));
        receiver_.answer(engine.reportTo(probe));
        return receive();
    }

    std::vector<tTrapDestInfo> version2() { return {row("1", receiver_)}; }
    std::vector<tTrapDestInfo> version3() { return {row("1", receiver_, 3, "trapuser")}; }

    UdpReceiver receiver_;
    FakeEngine engine_{"\x80\x01\x86\x9F\x05receiver1"};
    std::shared_ptr<int> delivery_ = std::make_shared<int>();
};

TEST_F(InformSending, HoldsTheDeliveryUntilTheAnswer)
{
    writeSettings(settings(""));
    sender().setReceivers(version2());

    sender().send(trap(version2()), delivery_);

    const auto inform = receiver_.receive();
    const auto pdu = parseMessage(inform);
    ASSERT_NE(pdu, nullptr);
    EXPECT_EQ(pdu->command, SNMP_MSG_INFORM);
    EXPECT_EQ(communityOf(*pdu), "public");
    EXPECT_EQ(textAt(*pdu, 2), "Fan 3 failed");
    EXPECT_TRUE(status().inform);
    EXPECT_EQ(status().sent, 1u);
    EXPECT_EQ(status().waiting, 1u);
    EXPECT_EQ(delivery_.use_count(), 2);

    receiver_.answer(responseTo(inform));
    ASSERT_TRUE(serve([this] { return status().answered == 1; }));

    EXPECT_EQ(status().waiting, 0u);
    EXPECT_EQ(status().state, "ok");
    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(InformSending, RepeatsWhatIsNotAnswered)
{
    writeSettings(settings(R"(, "timeoutMs": 100)"));
    sendTo(version2());
    const auto first = parseMessage(receive());

    const auto second = receive();

    ASSERT_NE(first, nullptr);
    EXPECT_EQ(parseMessage(second)->reqid, first->reqid);
    receiver_.answer(responseTo(second));
    ASSERT_TRUE(serve([this] { return status().answered == 1; }));
    EXPECT_EQ(status().sent, 1u);
    EXPECT_EQ(status().givenUp, 0u);
}

TEST_F(InformSending, GivesUpAfterTheLastRetry)
{
    writeSettings(settings(R"(, "timeoutMs": 100, "retries": 1)"));
    sender().setReceivers(version2());
    sender().send(trap(version2()), delivery_);

    ASSERT_TRUE(serve([this] { return status().givenUp == 1; }));

    EXPECT_NE(receiver_.receive(), "");
    EXPECT_NE(receiver_.receive(), "");
    EXPECT_FALSE(receiver_.hasSomething());
    EXPECT_EQ(status().state, "does not answer informs");
    EXPECT_EQ(status().waiting, 0u);
    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(InformSending, GivesUpWhatIsRefused)
{
    writeSettings(settings(""));
    sendTo(version2());
    auto answer = responseTo(receiver_.receive());
    // The error status is the second number of the PDU: type and length of both, then the value.
    const auto pdu = answer.find('\xA2');
    const auto status = answer.find(std::string("\x02\x01\x00\x02\x01\x00", 6), pdu);
    ASSERT_NE(status, std::string::npos);
    answer[status + 2] = 16;

    receiver_.answer(answer);

    ASSERT_TRUE(serve([this] { return this->status().givenUp == 1; }));
    EXPECT_THAT(this->status().state, HasSubstr("refuses informs: authorizationError"));
}

TEST_F(InformSending, HasAtMost32OnTheirWay)
{
    writeSettings(settings(R"(, "timeoutMs": 60000)"));
    sender().setReceivers(version2());
    for (int i = 0; i < 33; ++i) {
        sender().send(trap(version2(), std::to_string(i)), nullptr);
    }
    EXPECT_EQ(status().sent, 32u);
    EXPECT_EQ(status().waiting, 33u);
    const auto first = receiver_.receive();

    receiver_.answer(responseTo(first));

    ASSERT_TRUE(serve([this] { return status().sent == 33; }));
    EXPECT_EQ(status().answered, 1u);
    EXPECT_EQ(textAt(*parseMessage(first), 2), "0");
    EXPECT_EQ(textAt(*parseMessage(receiver_.receive()), 2), "1");
}

TEST_F(InformSending, ToARowThatGoesAwayIsGivenUp)
{
    writeSettings(settings(""));
    sender().setReceivers(version2());
    sender().send(trap(version2()), delivery_);
    ASSERT_EQ(delivery_.use_count(), 2);

    sender().setReceivers({});

    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(InformSending, StartsAgainWithOtherSettings)
{
    writeSettings(settings(R"(, "timeoutMs": 60000)"));
    sender().setReceivers(version2());
    sender().send(trap(version2(), "one"), delivery_);
    sender().send(trap(version2(), "two"), nullptr);
    receiver_.receive();
    receiver_.receive();

    changeSettings(settings(R"(, "timeoutMs": 60000, "community": "new")"));

    const auto first = parseMessage(receive());
    const auto second = parseMessage(receive());
    EXPECT_EQ(communityOf(*first), "new");
    EXPECT_EQ(textAt(*first, 2), "one");
    EXPECT_EQ(textAt(*second, 2), "two");
    EXPECT_EQ(status().sent, 2u);
    EXPECT_EQ(delivery_.use_count(), 2);
}

TEST_F(InformSending, OfVersion1IsAnErrorAndATrapGoesOut)
{
    writeSettings(settings(""));

    sendTo({row("1", receiver_, 1)});

    EXPECT_EQ(parseMessage(receiver_.receive())->command, SNMP_MSG_TRAP);
    EXPECT_FALSE(status().inform);
    ASSERT_EQ(log_.lines().size(), 1u);
    EXPECT_THAT(log_.lines()[0], HasSubstr("receivers[0].inform: trap receiver 1"));
}

TEST_F(InformSending, OfVersion3FindsTheEngineFirst)
{
    writeSettings(settings(""));
    sender().setReceivers(version3());
    sender().send(trap(version3()), delivery_);
    EXPECT_EQ(status().sent, 0u);

    const auto inform = receiveAfterDiscovery(engine_);

    EXPECT_TRUE(engine_.isFor(inform));
    const auto pdu = parseMessage(inform);
    ASSERT_NE(pdu, nullptr);
    EXPECT_EQ(pdu->command, SNMP_MSG_INFORM);
    EXPECT_EQ(pdu->securityLevel, SNMP_SEC_LEVEL_AUTHPRIV);
    EXPECT_EQ(textAt(*pdu, 2), "Fan 3 failed");

    receiver_.answer(engine_.responseTo(*pdu));
    ASSERT_TRUE(serve([this] { return status().answered == 1; }));
    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(InformSending, OfVersion3FindsAChangedEngine)
{
    writeSettings(settings(""));
    sender().setReceivers(version3());
    sender().send(trap(version3()), delivery_);
    const auto lost = receiveAfterDiscovery(engine_);
    const FakeEngine other("\x80\x01\x86\x9F\x05receiver2");

    receiver_.answer(other.reportTo(lost));
    const auto inform = receiveAfterDiscovery(other);

    EXPECT_TRUE(other.isFor(inform));
    const auto pdu = parseMessage(inform);
    ASSERT_NE(pdu, nullptr);
    receiver_.answer(other.responseTo(*pdu));
    ASSERT_TRUE(serve([this] { return status().answered == 1; }));
    EXPECT_EQ(status().sent, 1u) << "it is the same inform";
    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(InformSending, OfVersion3SaysWhyItIsRefused)
{
    writeSettings(settings(""));
    sendTo(version3());
    const auto inform = receiveAfterDiscovery(engine_);

    receiver_.answer(engine_.reportTo(inform, 3));

    ASSERT_TRUE(serve([this] { return status().givenUp == 1; }));
    EXPECT_EQ(status().state, "refuses informs: it does not know the user");
}

TEST_F(InformSending, OfVersion3WaitsOnlySoLongForTheEngine)
{
    writeSettings(settings(R"(, "timeoutMs": 100, "retries": 0)"));
    sender().setReceivers(version3());
    sender().send(trap(version3()), delivery_);
    ASSERT_TRUE(serve([this] { return status().state != "ok"; }));
    EXPECT_THAT(status().state, HasSubstr("its engine ID is unknown"));
    EXPECT_EQ(status().waiting, 1u);
    ASSERT_NE(receiver_.receive(), "");

    ASSERT_NE(receive(), "") << "it is asked again";
    sender().proceed(Clock::now() + std::chrono::seconds(11));

    EXPECT_EQ(status().failed, 1u);
    EXPECT_EQ(status().waiting, 0u);
    EXPECT_EQ(delivery_.use_count(), 1);
}

TEST_F(InformSending, OfVersion3UsesAChangedPassphraseAtOnce)
{
    writeSettings(settings(R"(, "timeoutMs": 60000)"));
    sender().setReceivers(version3());
    sender().send(trap(version3()), delivery_);
    const auto before = receiveAfterDiscovery(engine_);
    ASSERT_NE(parseMessage(before), nullptr);
    auto user = kUser;
    user.replace(user.find("privacy-phrase"), 14, "another-phrase");

    changeSettings(settings(R"(, "timeoutMs": 60000)", user));

    const auto after = receive();
    EXPECT_EQ(parseMessage(before), nullptr) << "the former keys are gone";
    const auto pdu = parseMessage(after);
    ASSERT_NE(pdu, nullptr);
    receiver_.answer(engine_.responseTo(*pdu));
    ASSERT_TRUE(serve([this] { return status().answered == 1; }));
}

TEST_F(InformSending, OfVersion3NeedsAKnownUser)
{
    writeSettings(settings(""));

    sendTo({row("1", receiver_, 3, "nobody")});

    EXPECT_EQ(status().failed, 1u);
    EXPECT_THAT(status().state, HasSubstr("user \"nobody\" is not known"));
    EXPECT_FALSE(receiver_.hasSomething()) << "nobody is asked for an engine ID";
}

TEST_F(InformSending, ThatIsDeadDoesNotDelayOthers)
{
    UdpReceiver alive("127.0.0.2");
    writeSettings(settings(R"(, "timeoutMs": 60000)"));
    const std::vector<tTrapDestInfo> rows{row("1", receiver_), row("2", receiver_, 3, "trapuser"),
                                          row("3", alive)};
    sender().setReceivers(rows);

    for (int i = 0; i < 100; ++i) {
        sender().send(trap(rows, std::to_string(i)), nullptr);
    }

    EXPECT_EQ(status(2).sent, 100u);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(textAt(*parseMessage(alive.receive()), 2), std::to_string(i));
    }
}

}  // namespace
