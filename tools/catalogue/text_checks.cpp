#include "tools/catalogue/checks.h"

#include "tools/catalogue/finding_kinds.h"

#include <cstdint>
#include <cstdio>
#include <string_view>

namespace talvik::ctl {

namespace {

/// The shortest code point that needs so many bytes.
constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};

struct Character {
    std::uint32_t code = 0;
    std::size_t length = 0;  ///< 0 when the bytes are no UTF-8
};

Character characterAt(std::string_view text, std::size_t at)
{
    const auto lead = static_cast<unsigned char>(text[at]);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t length = lead >= 0xF0 ? 4 : (lead >= 0xE0 ? 3 : 2);
    if (lead < 0xC0 || lead >= 0xF8 || text.size() - at < length) {
        return {};
    }
    std::uint32_t code = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[at + i]);
        if ((next & 0xC0U) != 0x80U) {
            return {};
        }
        code = (code << 6U) | (next & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code < 0xE000;
    if (code < kSmallest[length] || code > 0x10FFFF || surrogate) {
        return {};
    }
    return {code, length};
}

bool isControl(std::uint32_t code)
{
    return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

std::string unicodeName(std::uint32_t code)
{
    char name[16];
    std::snprintf(name, sizeof name, "U+%04X", code);
    return name;
}

}  // namespace

void checkCharacters(const JsonDocument& file, const Json::Value& value, const std::string& subject,
                     Findings& findings)
{
    const auto text = value.asString();
    for (std::size_t at = 0; at < text.size();) {
        const auto character = characterAt(text, at);
        if (character.length == 0) {
            findings.add(kind::kInvalidUtf8, file.placeIn(value, at),
                         subject + " is no UTF-8 from here on; managers will show it garbled",
                         "save the file as UTF-8");
            return;
        }
        if (isControl(character.code)) {
            findings.add(kind::kControlCharacter, file.placeIn(value, at),
                         subject + " holds the control character " + unicodeName(character.code) +
                             (character.code == 0 ? ", and the module reads it only up to there"
                                                  : "; managers show texts in one line"),
                         "replace it by a blank");
            return;
        }
        at += character.length;
    }
}

void checkTexts(const JsonDocument& file, const Definition& definition, Findings& findings)
{
    for (const auto member : {Member::Name, Member::Location, Member::Detail, Member::Suggestion}) {
        const auto& text = definition.of(member);
        const auto subject = definition.subject(member);
        if (text.isWrong) {
            continue;
        }
        if (text.value == nullptr) {
            findings.add(kind::kMissingText, file.placeOf(*definition.element),
                         subject + " is missing; operators will read None", "add the text");
            continue;
        }
        const auto place = file.placeOf(*text.value);
        if (text.text == "None" || text.text == "--") {
            findings.add(kind::kTextLooksMissing, place,
                         subject + " reads like a text or value that is missing",
                         "say in words what there is to say");
        } else if (text.text.empty()) {
            findings.add(kind::kEmptyText, place, subject + " is empty", "add a text");
        }
    }
    for (const auto member :
         {Member::Name, Member::Reason, Member::Suggestion, Member::Detail, Member::Location}) {
        const auto* value = definition.of(member).value;
        if (value != nullptr) {
            checkCharacters(file, *value, definition.subject(member), findings);
        }
    }
}

}  // namespace talvik::ctl
