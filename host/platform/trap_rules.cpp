#include "host/platform/trap_rules.h"

#include "host/platform/destination_address.h"
#include "host/platform/log_text.h"

#include <algorithm>
#include <charconv>

namespace talvik::trap_rules {

namespace {

constexpr unsigned int kMaxPort = 65535;

/// A character that was taken from the front of a text.
struct Character {
    std::uint32_t code;
    std::size_t octets;
};

unsigned int octetAt(const std::string& text, std::size_t position)
{
    return static_cast<unsigned char>(text[position]);
}

/// The form of a character by its first octet: how many octets follow, which bits of the first one
/// count, and the least code that needs that many.
struct Form {
    unsigned int mask;
    unsigned int mark;
    std::size_t following;
    std::uint32_t least;
};

constexpr Form kForms[] = {
    {0x80, 0x00, 0, 0},
    {0xE0, 0xC0, 1, 0x80},
    {0xF0, 0xE0, 2, 0x800},
    {0xF8, 0xF0, 3, 0x10000},
};

/// The character at `position`; nothing if there is no well-formed one.
std::optional<Character> characterAt(const std::string& text, std::size_t position)
{
    const auto first = octetAt(text, position);
    const auto* form =
        std::find_if(std::begin(kForms), std::end(kForms), [&](const Form& candidate) {
            return (first & candidate.mask) == candidate.mark;
        });
    if (form == std::end(kForms) || text.size() - position <= form->following) {
        return std::nullopt;
    }
    std::uint32_t code = first & ~form->mask;
    for (std::size_t i = 1; i <= form->following; ++i) {
        const auto octet = octetAt(text, position + i);
        if ((octet & 0xC0U) != 0x80U) {
            return std::nullopt;
        }
        code = (code << 6U) | (octet & 0x3FU);
    }
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < form->least || code > 0x10FFFF || isSurrogate) {
        return std::nullopt;
    }
    return Character{code, 1 + form->following};
}

bool isControl(std::uint32_t code)
{
    return code < 0x20 || (code >= 0x7F && code <= 0x9F);
}

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
    if (user.empty() || user.size() > kMaxUserOctets) {
        return false;
    }
    std::size_t position = 0;
    while (position < user.size()) {
        const auto character = characterAt(user, position);
        if (!character || isControl(character->code)) {
            return false;
        }
        position += character->octets;
    }
    return true;
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
