#include "host/platform/destination_address.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstring>

namespace talvik {

namespace {

constexpr std::size_t kMaxName = 253;
constexpr std::size_t kMaxLabel = 63;
constexpr std::size_t kMaxZone = 15;

// The character tests of the C library go by the process's locale.
bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isLabelCharacter(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-';
}

bool isLabel(const std::string& text)
{
    return !text.empty() && text.size() <= kMaxLabel && text.front() != '-' && text.back() != '-' &&
           std::all_of(text.begin(), text.end(), isLabelCharacter);
}

bool isName(std::string text)
{
    if (!text.empty() && text.back() == '.') {
        text.pop_back();
    }
    if (text.size() > kMaxName) {
        return false;
    }
    std::size_t start = 0;
    for (auto dot = text.find('.'); dot != std::string::npos; dot = text.find('.', start)) {
        if (!isLabel(text.substr(start, dot - start))) {
            return false;
        }
        start = dot + 1;
    }
    const auto last = text.substr(start);
    return isLabel(last) && !std::all_of(last.begin(), last.end(), isDigit);
}

bool isZone(const std::string& text)
{
    return !text.empty() && text.size() <= kMaxZone &&
           std::all_of(text.begin(), text.end(),
                       [](char c) { return c > ' ' && c <= '~' && c != '/'; });
}

bool isUnspecified(const in6_addr& address)
{
    static constexpr unsigned char kNoIpv4[4] = {};
    return IN6_IS_ADDR_UNSPECIFIED(&address) ||
           (IN6_IS_ADDR_V4MAPPED(&address) &&
            std::memcmp(&address.s6_addr[12], kNoIpv4, sizeof(kNoIpv4)) == 0);
}

/// With or without a zone, and not the unspecified address.
bool isIpv6(const std::string& text)
{
    const auto percent = text.find('%');
    in6_addr address{};
    if (inet_pton(AF_INET6, text.substr(0, percent).c_str(), &address) != 1 ||
        isUnspecified(address)) {
        return false;
    }
    return percent == std::string::npos ||
           (IN6_IS_ADDR_LINKLOCAL(&address) && isZone(text.substr(percent + 1)));
}

}  // namespace

DestinationKind destinationKind(const std::string& address)
{
    if (address.find('\0') != std::string::npos) {
        return DestinationKind::None;
    }
    in_addr ipv4{};
    if (inet_pton(AF_INET, address.c_str(), &ipv4) == 1) {
        return ipv4.s_addr == INADDR_ANY ? DestinationKind::None : DestinationKind::Ipv4;
    }
    if (isIpv6(address)) {
        return DestinationKind::Ipv6;
    }
    return isName(address) ? DestinationKind::Name : DestinationKind::None;
}

}  // namespace talvik
