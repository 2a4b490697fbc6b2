#include "host/snmp/agentx_address.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/un.h>

#include <charconv>
#include <cstring>
#include <utility>

namespace talvik {

namespace {

constexpr std::size_t kLongestPath = sizeof(sockaddr_un::sun_path) - 1;

template <typename Address>
AgentxAddress addressOf(std::string text, const Address& socket)
{
    AgentxAddress address;
    address.text = std::move(text);
    address.size = sizeof socket;
    std::memcpy(&address.socket, &socket, sizeof socket);
    return address;
}

/// What follows `scheme` in `text`; nothing when it begins otherwise.
std::optional<std::string> behind(const std::string& scheme, const std::string& text)
{
    return text.compare(0, scheme.size(), scheme) == 0
               ? std::optional<std::string>(text.substr(scheme.size()))
               : std::nullopt;
}

std::optional<in_port_t> portOf(const std::string& text)
{
    constexpr unsigned kHighest = 65535;
    unsigned port = 0;
    const auto* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, port);
    if (parsed.ec != std::errc() || parsed.ptr != end || port == 0 || port > kHighest) {
        return std::nullopt;
    }
    return htons(static_cast<in_port_t>(port));
}

std::optional<AgentxAddress> unixMaster(const std::string& path)
{
    if (path.empty() || path.front() != '/' || path.size() > kLongestPath) {
        return std::nullopt;
    }
    sockaddr_un socket{};
    socket.sun_family = AF_UNIX;
    path.copy(socket.sun_path, path.size());
    return addressOf("unix:" + path, socket);
}

std::optional<AgentxAddress> tcpMaster(const std::string& text, const std::string& place)
{
    constexpr unsigned kLoopbackNet = 127;
    const auto colon = place.rfind(':');
    const auto port = colon == std::string::npos ? std::nullopt : portOf(place.substr(colon + 1));
    sockaddr_in socket{};
    socket.sin_family = AF_INET;
    if (!port || inet_pton(AF_INET, place.substr(0, colon).c_str(), &socket.sin_addr) != 1 ||
        ntohl(socket.sin_addr.s_addr) >> 24U != kLoopbackNet) {
        return std::nullopt;
    }
    socket.sin_port = *port;
    return addressOf(text, socket);
}

std::optional<AgentxAddress> tcp6Master(const std::string& text, const std::string& place)
{
    const auto number = behind("[::1]:", place);
    const auto port = number ? portOf(*number) : std::nullopt;
    if (!port) {
        return std::nullopt;
    }
    sockaddr_in6 socket{};
    socket.sin6_family = AF_INET6;
    socket.sin6_addr = in6addr_loopback;
    socket.sin6_port = *port;
    return addressOf(text, socket);
}

}  // namespace

std::optional<AgentxAddress> parseAgentxAddress(const std::string& text)
{
    if (!text.empty() && text.front() == '/') {
        return unixMaster(text);
    }
    if (const auto path = behind("unix:", text)) {
        return unixMaster(*path);
    }
    if (const auto place = behind("tcp:", text)) {
        return tcpMaster(text, *place);
    }
    if (const auto place = behind("tcp6:", text)) {
        return tcp6Master(text, *place);
    }
    return std::nullopt;
}

std::string agentxAddressHint()
{
    return "an AgentX master on this machine is due: unix:/PATH of at most " +
           std::to_string(kLongestPath) + " octets, tcp:127.0.0.1:PORT or tcp6:[::1]:PORT";
}

}  // namespace talvik
