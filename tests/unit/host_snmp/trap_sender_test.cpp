#include "host/snmp/trap_sender.h"

#include "host/startup_error.h"
#include "tests/unit/host_snmp/trap_sender_kit.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using talvik::Delivery;
using talvik::test::communityOf;
using talvik::test::parseMessage;
using talvik::test::textAt;
using talvik::test::TrapSending;
using talvik::test::UdpReceiver;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string kUser =
    R"({"name": "trapuser", "auth": "SHA-256", "authPassphrase": "authentication",)"
    R"( "privacy": "AES", "privacyPassphrase": "privacy-phrase"})";

TEST_F(TrapSending, ReachesReceiversOfBothIpVersions)
{
    UdpReceiver ipv4;
    UdpReceiver ipv6("::1");

    sendTo({row("1", ipv4), row("2", ipv6)});

    for (auto* receiver : {&ipv4, &ipv6}) {
        const auto pdu = parseMessage(receiver->receive());
        ASSERT_NE(pdu, nullptr);
        EXPECT_EQ(communityOf(*pdu), "public");
        EXPECT_EQ(textAt(*pdu, 2), "Fan 3 failed");
    }
    EXPECT_EQ(status(0).sent, 1u);
    EXPECT_EQ(status(1).sent, 1u);
    EXPECT_EQ(status(0).state, "ok");
    EXPECT_FALSE(status(0).inform);
}

TEST_F(TrapSending, EncodesOnceForReceiversThatShareTheCommunity)
{
    UdpReceiver first;
    UdpReceiver second;
    UdpReceiver other;
    writeSettings(R"({"receivers": [{"address": "127.0.0.1", "port": )" +
                  std::to_string(other.port()) + R"(, "community": "secret"}]})");

    sendTo({row("1", first), row("2", second), row("3", other)});

    const auto message = first.receive();
    EXPECT_EQ(second.receive(), message) << "a message of its own has a request ID of its own";
    const auto theirs = parseMessage(other.receive());
    ASSERT_NE(theirs, nullptr);
    EXPECT_EQ(communityOf(*theirs), "secret");
    EXPECT_EQ(theirs->reqid, parseMessage(message)->reqid + 1) << "nothing was encoded in between";
}

TEST_F(TrapSending, HoldsTheDeliveryNoLongerThanItTakes)
{
    UdpReceiver receiver;
    const auto delivery = std::make_shared<int>();
    sender().setReceivers({row("1", receiver)});

    sender().send(trap({row("1", receiver)}), delivery);

    EXPECT_EQ(delivery.use_count(), 1);
}

TEST_F(TrapSending, TellsVersion1TheAddressOfTheRoute)
{
    UdpReceiver ipv4;
    UdpReceiver ipv6("::1");

    sendTo({row("1", ipv4, 1), row("2", ipv6, 1)});

    EXPECT_THAT(parseMessage(ipv4.receive())->agent_addr, ElementsAre(127, 0, 0, 1));
    EXPECT_THAT(parseMessage(ipv6.receive())->agent_addr, ElementsAre(0, 0, 0, 0));
}

TEST_F(TrapSending, TellsVersion1TheAddressOfTheSettings)
{
    UdpReceiver receiver;
    writeSettings(R"({"v1AgentAddress": "192.0.2.50"})");

    sendTo({row("1", receiver, 1)});

    EXPECT_THAT(parseMessage(receiver.receive())->agent_addr, ElementsAre(192, 0, 2, 50));
}

TEST_F(TrapSending, LeavesFromTheSourceOfTheSettings)
{
    UdpReceiver receiver;
    writeSettings(R"({"receivers": [{"address": "127.0.0.1", "source": "127.0.0.9"}]})");

    sendTo({row("1", receiver, 1)});

    EXPECT_THAT(parseMessage(receiver.receive())->agent_addr, ElementsAre(127, 0, 0, 9));
    const auto& from = reinterpret_cast<const sockaddr_in&>(receiver.sender().storage);
    EXPECT_EQ(ntohl(from.sin_addr.s_addr), 0x7F000009U);
}

TEST_F(TrapSending, SaysOnceWhyASourceCannotBeUsed)
{
    UdpReceiver receiver;
    writeSettings(R"({"receivers": [{"address": "127.0.0.1", "source": "192.0.2.77"}]})");

    sendTo({row("1", receiver)});
    sendTo({row("1", receiver)});

    EXPECT_EQ(status().waiting, 2u) << "the address may come";
    EXPECT_EQ(status().sent, 0u);
    EXPECT_THAT(status().state, HasSubstr("192.0.2.77 cannot be used"));
    EXPECT_EQ(log_.lines().size(), 1u);

    changeSettings("{}");
    sendTo({row("1", receiver)});

    EXPECT_EQ(status().state, "ok");
    EXPECT_THAT(log_.lines().back(), HasSubstr("works again"));
}

TEST_F(TrapSending, RefusesASourceOfTheOtherIpVersion)
{
    UdpReceiver receiver;
    writeSettings(R"({"receivers": [{"address": "127.0.0.1", "source": "::1"}]})");

    sendTo({row("1", receiver)});

    EXPECT_THAT(status().state, HasSubstr("of the other IP version"));
}

TEST_F(TrapSending, SendsVersion3AsAUserOfTheSettings)
{
    UdpReceiver receiver;
    writeSettings(R"({"users": [)" + kUser + "]}");

    sendTo({row("1", receiver, 3, "trapuser")});

    const auto pdu = parseMessage(receiver.receive());
    ASSERT_NE(pdu, nullptr);
    EXPECT_EQ(pdu->securityLevel, SNMP_SEC_LEVEL_AUTHPRIV);
    EXPECT_EQ(textAt(*pdu, 2), "Fan 3 failed");
}

TEST_F(TrapSending, UsesAChangedPassphraseFromTheNextTrapOn)
{
    UdpReceiver receiver;
    const auto rows = std::vector{row("1", receiver, 3, "trapuser")};
    writeSettings(R"({"users": [)" + kUser + "]}");
    sendTo(rows);
    const auto before = receiver.receive();
    ASSERT_NE(parseMessage(before), nullptr);

    auto user = kUser;
    changeSettings(R"({"users": [)" +
                   user.replace(user.find("authentication"), 14, "another-phrase") + "]}");
    sendTo(rows);

    EXPECT_NE(parseMessage(receiver.receive()), nullptr);
    EXPECT_EQ(parseMessage(before), nullptr) << "the former keys are gone";
}

TEST_F(TrapSending, SaysWhatToDoAboutAnUnknownUser)
{
    UdpReceiver receiver;

    sendTo({row("1", receiver, 3, "nobody"), row("2", receiver, 3, "--")});

    EXPECT_EQ(status(0).failed, 1u);
    EXPECT_THAT(status(0).state, HasSubstr("user \"nobody\" is not known; add it to \"users\""));
    EXPECT_EQ(status(1).failed, 1u);
    EXPECT_THAT(status(1).state, HasSubstr("write its user column"));
    EXPECT_FALSE(receiver.hasSomething());
}

TEST_F(TrapSending, RefusesAnUnknownVersion)
{
    UdpReceiver receiver;

    sendTo({row("1", receiver, 4)});

    EXPECT_EQ(status().failed, 1u);
    EXPECT_THAT(status().state, HasSubstr("version code 4 is unknown"));
}

TEST_F(TrapSending, KeepsTheCountersOfRowsThatStay)
{
    UdpReceiver receiver;
    sendTo({row("1", receiver), row("2", receiver)});

    sender().setReceivers({row("2", receiver), row("1", receiver, 1)});

    EXPECT_EQ(status(0).receiver.index, "2");
    EXPECT_EQ(status(0).sent, 1u);
    EXPECT_EQ(status(1).sent, 0u) << "its version is another one";
}

TEST_F(TrapSending, SaysThatARowIsGone)
{
    UdpReceiver receiver;
    sender().setReceivers({});

    sender().send(trap({row("7", receiver)}), nullptr);

    EXPECT_FALSE(receiver.hasSomething());
    ASSERT_EQ(log_.lines().size(), 1u);
    EXPECT_THAT(log_.lines()[0], HasSubstr("trap receiver 7 is not in the table any more"));
}

TEST_F(TrapSending, CutsTextsForEveryVersionAlikeAndSaysSo)
{
    UdpReceiver first;
    UdpReceiver second;

    sendTo({row("1", first, 1), row("2", second, 2)}, std::string(5000, 'x'));

    const auto version1 = parseMessage(first.receive());
    const auto version2 = parseMessage(second.receive());
    ASSERT_NE(version1, nullptr);
    ASSERT_NE(version2, nullptr);
    EXPECT_EQ(textAt(*version1, 0), textAt(*version2, 2));
    const auto left = textAt(*version1, 0).size();
    EXPECT_THAT(log_.lines(),
                ElementsAre("trap 1.3.6.1.4.1.99999.2.91.10.2.1.0.1: texts cut to fit 1472 octets: "
                            "1.3.6.1.4.1.99999.2.91.10.3.1.1.4.0 from 5000 to " +
                            std::to_string(left)));
}

TEST_F(TrapSending, SendsNothingThatDoesNotFitWithoutTexts)
{
    UdpReceiver receiver;
    auto tooMuch = trap({row("1", receiver)});
    tooMuch.bindings.resize(60, tooMuch.bindings.front());
    sender().setReceivers({row("1", receiver)});

    sender().send(tooMuch, nullptr);

    EXPECT_EQ(status().failed, 1u);
    EXPECT_FALSE(receiver.hasSomething());
    ASSERT_EQ(log_.lines().size(), 1u);
    EXPECT_THAT(log_.lines()[0], HasSubstr("takes more than 1472 octets even without its texts"));
}

TEST_F(TrapSending, DoesNotStartWithWrongSettings)
{
    writeSettings(R"({"comunity": "x"})");

    EXPECT_THROW(sender(), talvik::StartupError);
}

TEST_F(TrapSending, NeverHasToProceedWithNothingWaiting)
{
    UdpReceiver receiver;
    sendTo({row("1", receiver)});

    EXPECT_EQ(sender().deadline(), Time::max());
}

TEST_F(TrapSending, WaitsForANameToResolve)
{
    UdpReceiver receiver;
    const auto rows = std::vector{row("1", "nms.example", receiver.port())};
    auto delivery = std::make_shared<int>();
    sender().setReceivers(rows);
    ASSERT_TRUE(script_.waitForStart("nms.example"));

    sender().send(trap(rows), delivery);

    EXPECT_EQ(status().waiting, 1u);
    EXPECT_THAT(status().state, HasSubstr("its name does not resolve"));
    EXPECT_EQ(delivery.use_count(), 2);
    EXPECT_LT(sender().deadline(), Clock::now() + std::chrono::seconds(1));

    script_.answer("nms.example", {talvik::LookupOutcome::Found, {"127.0.0.1"}, ""});
    ASSERT_TRUE(script_.settle());
    sender().proceed(sender().deadline());

    EXPECT_NE(parseMessage(receiver.receive()), nullptr);
    EXPECT_EQ(status().waiting, 0u);
    EXPECT_EQ(status().sent, 1u);
    EXPECT_EQ(status().state, "ok");
    EXPECT_EQ(delivery.use_count(), 1);
}

TEST_F(TrapSending, GivesUpWhatWaitedTooLongForAName)
{
    const auto rows = std::vector{row("1", "nms.example", 9)};
    auto delivery = std::make_shared<int>();
    sender().setReceivers(rows);
    sender().send(trap(rows), delivery);

    sender().proceed(Clock::now() + std::chrono::seconds(9));
    EXPECT_EQ(status().waiting, 1u);
    sender().proceed(Clock::now() + std::chrono::seconds(11));

    EXPECT_EQ(status().waiting, 0u);
    EXPECT_EQ(status().failed, 1u);
    EXPECT_EQ(delivery.use_count(), 1);
}

TEST_F(TrapSending, UsesTheLastKnownAddressOfAName)
{
    UdpReceiver receiver;
    const auto rows = std::vector{row("1", "nms.example", receiver.port())};
    sender().setReceivers(rows);
    ASSERT_TRUE(script_.waitForStart("nms.example"));
    script_.answer("nms.example", {talvik::LookupOutcome::Found, {"127.0.0.1"}, ""});
    ASSERT_TRUE(script_.settle());
    sender().send(trap(rows), nullptr);
    ASSERT_NE(receiver.receive(), "");

    names_.stop();
    names_.release("nms.example");
    // A cache that forgot the name stands for a name that stopped resolving.
    for (int i = 0; i < 300; ++i) {
        names_.resolves("other" + std::to_string(i));
    }
    ASSERT_TRUE(names_.addressesOf("nms.example").empty());
    sender().send(trap(rows), nullptr);

    EXPECT_NE(receiver.receive(), "");
    EXPECT_EQ(status().sent, 2u);
    EXPECT_EQ(status().state,
              "its name does not resolve; 127.0.0.1, the last known address, is used");
}

}  // namespace
