#include "host/snmp/trap_text.h"

#include "host/platform/utf8_text.h"

#include <string_view>

namespace talvik {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr std::string_view kEllipsis = "\xE2\x80\xA6";     // "…"

/// The time of an alarm below the objects of either kind of alarm trap.
const ObjectId kAlarmTimes[] = {
    {1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 3, 1, 1, 8, 0},
    {1, 3, 6, 1, 4, 1, 99999, 2, 251, 20, 1, 3, 8, 0},
};

bool isAlarmTime(const ObjectId& name)
{
    for (const auto& time : kAlarmTimes) {
        if (name == time) {
            return true;
        }
    }
    return false;
}

/// 0 for a character of ASCII that is no control character, without a branch.
unsigned char strangeness(char octet)
{
    return static_cast<unsigned char>(octet - 0x20) > 0x7E - 0x20 ? 1 : 0;
}

/// Most texts are. Told from the rest at a fraction of what a look at each character takes.
bool isPlainAscii(const std::string& text)
{
    constexpr std::size_t kBlock = 16;  // which compilers turn into a few steps
    const char* at = text.data();
    const char* const end = at + text.size();
    unsigned char strange = 0;
    for (; static_cast<std::size_t>(end - at) >= kBlock; at += kBlock) {
        for (std::size_t i = 0; i < kBlock; ++i) {
            strange = static_cast<unsigned char>(strange | strangeness(at[i]));
        }
    }
    for (; at != end; ++at) {
        strange = static_cast<unsigned char>(strange | strangeness(*at));
    }
    return strange == 0;
}

bool isContinuation(char octet)
{
    return (static_cast<unsigned char>(octet) & 0xC0U) == 0x80;
}

/// How much of `text` stays in front of the ellipsis.
std::size_t keptSize(const std::string& text, std::size_t atMost)
{
    std::size_t kept = atMost - kEllipsis.size();
    while (kept > 0 && isContinuation(text[kept])) {
        --kept;
    }
    return kept;
}

}  // namespace

bool isText(const TrapBinding& binding)
{
    const auto size = binding.value.octets.size();
    return binding.value.syntax == Syntax::OctetString &&
           !((size == 8 || size == 11) && isAlarmTime(binding.name));
}

std::string plainText(std::string text)
{
    if (isPlainAscii(text) || isPlainUtf8(text)) {
        return text;
    }
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const auto character = utf8CharacterAt(text, at);
        if (character.length == 0) {
            plain += kReplacement;
            ++at;
            continue;
        }
        if (isControlCharacter(character.code)) {
            plain += ' ';
        } else {
            plain.append(text, at, character.length);
        }
        at += character.length;
    }
    return plain;
}

std::size_t shortenedSize(const std::string& text, std::size_t atMost)
{
    if (text.size() <= atMost) {
        return text.size();
    }
    return atMost < kEllipsis.size() ? 0 : keptSize(text, atMost) + kEllipsis.size();
}

std::string shortened(const std::string& text, std::size_t atMost)
{
    if (text.size() <= atMost) {
        return text;
    }
    if (atMost < kEllipsis.size()) {
        return "";
    }
    return text.substr(0, keptSize(text, atMost)).append(kEllipsis);
}

}  // namespace talvik
