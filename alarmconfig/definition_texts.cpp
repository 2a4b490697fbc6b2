#include "alarmconfig/definition_texts.h"

#include <json/value.h>

#include <string_view>

namespace talvik {

namespace {

// In the order of `DefinitionTexts::Key`, which is the one that JsonCpp walks members in.
constexpr std::array<std::string_view, 8> kNames = {
    "alarmOid", "detail", "eventID", "location", "name", "paramDesc", "reason", "suggestion"};

constexpr auto kUnknown = kNames.size();

/// Which of `kNames` this is. `expected`, looked at first, spares the search where members come in
/// that order.
std::size_t keyOf(std::string_view name, std::size_t expected)
{
    for (std::size_t tried = 0; tried < kNames.size(); ++tried) {
        const auto key = (expected + tried) % kNames.size();
        if (kNames[key] == name) {
            return key;
        }
    }
    return kUnknown;
}

}  // namespace

DefinitionTexts::DefinitionTexts(const Json::Value& definition)
{
    static_assert(kNames.size() == kKeys);
    if (!definition.isObject()) {
        definition.find(nullptr, nullptr);  // throws for all but null
        return;
    }
    std::size_t expected = 0;
    for (auto member = definition.begin(); member != definition.end(); ++member) {
        const char* end = nullptr;
        const char* begin = member.memberName(&end);
        const auto key = keyOf({begin, static_cast<std::size_t>(end - begin)}, expected);
        if (key != kUnknown) {
            members_[key] = &*member;
            expected = key + 1;
        }
    }
}

const char* DefinitionTexts::textOr(Key key, const char* missing) const
{
    const auto* member = members_[static_cast<std::size_t>(key)];
    return member == nullptr ? missing : member->asCString();
}

}  // namespace talvik
