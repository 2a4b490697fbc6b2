#include "tools/catalogue/checks.h"

#include "host/platform/utf8_text.h"
#include "tools/catalogue/finding_kinds.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>

namespace talvik::ctl {

namespace {

const char* effectOf(std::uint32_t code, Use use)
{
    if (code == 0) {
        return ", and the module reads it only up to there";
    }
    return use == Use::Shown ? "; managers show texts in one line"
                             : ", which counts although nobody sees it";
}

std::string unicodeName(std::uint32_t code)
{
    char name[16];
    std::snprintf(name, sizeof name, "U+%04X", code);
    return name;
}

}  // namespace

void checkCharacters(const JsonDocument& file, const Json::Value& value, const std::string& subject,
                     Use use, Findings& findings)
{
    const auto text = value.asString();
    for (std::size_t at = 0; at < text.size();) {
        const auto character = utf8CharacterAt(text, at);
        if (character.length == 0) {
            findings.add(kind::kInvalidUtf8, file.placeIn(value, at),
                         subject + " is no UTF-8 from here on" +
                             (use == Use::Shown ? "; managers will show it garbled" : ""),
                         "save the file as UTF-8");
            return;
        }
        if (isControlCharacter(character.code)) {
            findings.add(kind::kControlCharacter, file.placeIn(value, at),
                         subject + " holds the control character " + unicodeName(character.code) +
                             effectOf(character.code, use),
                         use == Use::Shown ? "replace it by a blank" : "remove it");
            return;
        }
        at += character.length;
    }
}

void checkShownValue(const std::string& shown, const std::string& subject, Place place,
                     Findings& findings)
{
    if (shown == "None" || shown == "--") {
        findings.add(kind::kTextLooksMissing, std::move(place),
                     subject + " is \"" + shown + "\", which reads like a value that is missing",
                     "say in words what there is to say");
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
    for (std::size_t i = 0; i < kMemberNames.size(); ++i) {
        const auto member = static_cast<Member>(i);
        const auto* value = definition.of(member).value;
        const bool isInternal =
            member == Member::EventId || member == Member::AlarmOid || member == Member::ParamDesc;
        if (value != nullptr) {
            checkCharacters(file, *value, definition.subject(member),
                            isInternal ? Use::Internal : Use::Shown, findings);
        }
    }
}

}  // namespace talvik::ctl
