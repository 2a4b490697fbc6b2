#include "host/snmp/agentx_address.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/un.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using talvik::parseAgentxAddress;

template <typename Socket>
Socket socketOf(const talvik::AgentxAddress& address)
{
    Socket socket{};
    EXPECT_EQ(address.size, sizeof socket);
    std::memcpy(&socket, &address.socket, sizeof socket);
    return socket;
}

TEST(AgentxAddress, NamesAUnixSocket)
{
    for (const auto* text : {"unix:/run/agentx/master", "/run/agentx/master"}) {
        const auto address = parseAgentxAddress(text);

        ASSERT_TRUE(address) << text;
        EXPECT_EQ(address->text, "unix:/run/agentx/master");
        const auto socket = socketOf<sockaddr_un>(*address);
        EXPECT_EQ(socket.sun_family, AF_UNIX);
        EXPECT_STREQ(socket.sun_path, "/run/agentx/master");
    }
}

TEST(AgentxAddress, NamesAPortOfThisMachine)
{
    const auto address = parseAgentxAddress("tcp:127.0.0.2:705");

    ASSERT_TRUE(address);
    EXPECT_EQ(address->text, "tcp:127.0.0.2:705");
    const auto socket = socketOf<sockaddr_in>(*address);
    EXPECT_EQ(ntohl(socket.sin_addr.s_addr), 0x7F000002U);
    EXPECT_EQ(ntohs(socket.sin_port), 705);
}

TEST(AgentxAddress, NamesAPortOfThisMachineInVersion6)
{
    const auto address = parseAgentxAddress("tcp6:[::1]:705");

    ASSERT_TRUE(address);
    EXPECT_EQ(address->text, "tcp6:[::1]:705");
    const auto socket = socketOf<sockaddr_in6>(*address);
    EXPECT_TRUE(IN6_IS_ADDR_LOOPBACK(&socket.sin6_addr));
    EXPECT_EQ(ntohs(socket.sin6_port), 705);
}

TEST(AgentxAddress, TakesTheDefault)
{
    EXPECT_TRUE(parseAgentxAddress(talvik::AgentxAddress::kDefault));
}

TEST(AgentxAddress, TakesAPathAsLongAsASocketsIs)
{
    constexpr std::size_t kLongest = sizeof(sockaddr_un::sun_path) - 1;

    EXPECT_TRUE(parseAgentxAddress('/' + std::string(kLongest - 1, 'x')));
    EXPECT_FALSE(parseAgentxAddress('/' + std::string(kLongest, 'x')));
}

TEST(AgentxAddress, RefusesOthers)
{
    for (const auto* text :
         {"", "unix:", "unix:relative", "relative", "tcp:", "tcp:705", "tcp:127.0.0.1",
          "tcp:127.0.0.1:", "tcp:127.0.0.1:0", "tcp:127.0.0.1:65536", "tcp:127.0.0.1:7x",
          "tcp:localhost:705", "tcp:192.0.2.1:705", "tcp:0.0.0.0:705", "tcp6:[::]:705",
          "tcp6:::1:705", "tcp6:[::1]", "tcp6:[2001:db8::1]:705", "udp:127.0.0.1:705"}) {
        EXPECT_FALSE(parseAgentxAddress(text)) << text;
    }
}

}  // namespace
