#include "host/snmp/object_id.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace talvik {

namespace {

constexpr unsigned long kMaxSubIdentifier = std::numeric_limits<std::uint32_t>::max();

}  // namespace

std::optional<ObjectId> parseObjectId(const std::string& text)
{
    ObjectId id;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (true) {
        unsigned long part = 0;
        const auto [next, error] = std::from_chars(at, end, part);
        if (error != std::errc() || part > kMaxSubIdentifier || id.size() == kMaxObjectIdLength) {
            return std::nullopt;
        }
        id.push_back(part);
        if (next == end) {
            break;
        }
        if (*next != '.') {
            return std::nullopt;
        }
        at = next + 1;
    }
    if (id.size() < 2) {
        return std::nullopt;
    }
    return id;
}

std::string toText(const ObjectId& id)
{
    std::string text;
    for (const auto part : id) {
        if (!text.empty()) {
            text += '.';
        }
        text += std::to_string(part);
    }
    return text;
}

bool startsWith(const ObjectId& id, const ObjectId& prefix)
{
    return id.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), id.begin());
}

}  // namespace talvik
