#include "host/platform/trap_rules.h"

#include "host/platform/destination_address.h"
#include "host/platform/log_text.h"
#include "host/platform/utf8_text.h"

#include <charconv>

namespace talvik::trap_rules {

namespace {

constexpr unsigned int kMaxPort = 65535;

}  // namespace

std::optional<std::uint32_t> parseIndex(const std::string& text)
{
    std::uint32_t value = 0;
    const auto* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || text.front() == '0' || value > kMaxIndex) {
        return std::nullopt;
    }
    return value;
}

bool isPort(unsigned int port)
{
    return port >= 1 && port <= kMaxPort;
}

bool isVersion(unsigned int version)
{
    return version >= 1 && version <= 3;
}

bool isType(unsigned int type)
{
    return (type >= 1 && type <= 3) || type == 7;
}

bool isUser(const std::string& user)
{
    return !user.empty() && user.size() <= kMaxUserOctets && isPlainUtf8(user);
}

std::string objection(const tTrapDestInfo& destination)
{
    if (destinationKind(destination.address) == DestinationKind::None) {
        return "address \"" + oneLine(destination.address) + "\"";
    }
    if (!isPort(destination.port)) {
        return "port " + std::to_string(destination.port);
    }
    if (!isVersion(destination.version)) {
        return "version " + std::to_string(destination.version);
    }
    if (!isType(destination.type)) {
        return "type " + std::to_string(destination.type);
    }
    return isUser(destination.user) ? "" : "user \"" + oneLine(destination.user) + "\"";
}

}  // namespace talvik::trap_rules
