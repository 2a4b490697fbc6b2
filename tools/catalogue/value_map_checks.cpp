#include "tools/catalogue/checks.h"

#include "alarmconfig/alarm_substitution.h"
#include "alarmconfig/alarm_text.h"
#include "tools/catalogue/alarm_texts.h"
#include "tools/catalogue/finding_kinds.h"
#include "tools/catalogue/module_log.h"

#include <algorithm>

namespace talvik::ctl {

namespace {

constexpr auto kNowhere = std::string::npos;

/// Looks at the blocks in braces of one definition. Which value a map gives is asked of the module.
class ValueMapChecks {
public:
    ValueMapChecks(const JsonDocument& file, const Definition& definition,
                   const std::vector<Enumeration>* enumerations, Findings& findings)
        : file_(file),
          definition_(definition),
          enumerations_(enumerations),
          findings_(findings),
          detail_(definition.of(Member::Detail).text),
          placeholders_(placeholdersIn(detail_, true))
    {
    }

    void checkDetail()
    {
        for (const auto& block : blocksIn(detail_)) {
            if (block.close == kNowhere) {
                add(kind::kMapNotClosed, block.open,
                    "this \"{\" is never closed: the text behind it stays as written, and "
                    "parameters that no placeholder before it names are not shown",
                    "close it with \"}\"");
                return;
            }
            checkBlock(block);
        }
    }

    void checkOther(Member member)
    {
        const auto& text = definition_.of(member);
        for (const auto& placeholder : placeholdersIn(text.text, false)) {
            const auto behind = placeholder.at + kPlaceholderMark.size() + kPositionDigits;
            if (behind < text.text.size() && text.text[behind] == '{') {
                findings_.add(kind::kMapNotInDetail, file_.placeIn(*text.value, behind),
                              definition_.subject(member) +
                                  " shows this value map as written; only \"detail\" has maps",
                              "remove it here; a map in \"detail\" counts for all three texts");
            }
        }
    }

private:
    /// What the module shows for `position` when its field is `raw`.
    std::string shownFor(unsigned position, const std::string& raw) const
    {
        std::vector<std::string> fields(std::size_t{position} + 1, "?");
        fields.back() = raw;
        ValuePairs pairs;
        parserParmeterByDetail(fields, pairs, detail_);
        const auto* value = valueAt(pairs, static_cast<int>(position));
        return value == nullptr ? std::string() : *value;
    }

    void checkBlock(const Block& block)
    {
        const auto next = std::find_if(placeholders_.begin(), placeholders_.end(),
                                       [&block](const auto& each) { return each.at > block.open; });
        if (next == placeholders_.begin()) {
            add(kind::kMapWithoutEffect, block.open,
                "the module removes this text in braces: there is no placeholder before it that "
                "it could belong to",
                "use other brackets, or put it behind the placeholder whose values it explains");
            return;
        }
        const auto owner = std::prev(next);
        const auto items = itemsIn(detail_, block);
        const auto isWrong = [](const MapItem& item) { return !item.isWellFormed(); };
        std::vector<MapItem> usable;
        std::remove_copy_if(items.begin(), items.end(), std::back_inserter(usable), isWrong);
        if (!hasEffect(block, owner, usable)) {
            return;
        }
        for (const auto& item : items) {
            checkItem(item, owner->number());
        }
        checkShared(block, owner, usable);
    }

    using Owner = std::vector<PlaceholderText>::const_iterator;

    bool hasEffect(const Block& block, Owner owner, const std::vector<MapItem>& items)
    {
        const auto number = owner->number();
        const bool any = std::any_of(items.begin(), items.end(), [this, number](const auto& item) {
            return item.shown() != item.raw() && shownFor(number, item.raw()) == item.shown();
        });
        if (any || items.empty()) {
            return true;
        }
        const bool named =
            std::any_of(placeholders_.cbegin(), owner, [number](const auto& placeholder) {
                return placeholder.number() == number;
            });
        if (named) {
            add(kind::kMapNotFirst, block.open,
                "this map has no effect: parameter " + std::to_string(number) +
                    " is used before, and its first use decides how it is shown",
                "move the map to the first \"##\" with this position");
        } else {
            add(kind::kMapWithoutEffect, block.open,
                "the module removes this map without using it: its \"{\" is more than 7 "
                "characters behind the \"##\" before it",
                "put the map directly behind its placeholder");
        }
        return false;
    }

    void checkItem(const MapItem& item, unsigned position)
    {
        if (!item.isWellFormed()) {
            add(kind::kMapItem, item.at,
                "the module cannot use \"" + std::string(item.text) +
                    "\": an item is raw:shown with one colon exactly",
                "write one colon; texts that are shown can have neither colon nor semicolon");
            return;
        }
        if (shownFor(position, item.raw()) != item.shown()) {
            add(kind::kMapRepeatedValue, item.at,
                "\"" + item.raw() + "\" is in this map before; the first one counts",
                "remove one of the two");
        }
        if (item.shown().find(kPlaceholderMark) != kNowhere) {
            checkValue(item, position);
        }
        checkEnumeration(item, position);
    }

    /// Fills the texts with the item's value, which holds a placeholder itself.
    void checkValue(const MapItem& item, unsigned position)
    {
        auto fields = sampleFields();
        fields.at(position) = item.raw();
        ValuePairs pairs;
        parserParmeterByDetail(fields, pairs, detail_);
        auto text = detail_;
        replaceBraceWithEmptyString(text);
        ModuleLog log;
        filled(text, pairs);
        const auto lines = log.take();
        const bool endless = std::any_of(lines.begin(), lines.end(), [](const auto& line) {
            return line.text.find("leads back to itself") != kNowhere;
        });
        if (endless) {
            add(kind::kSelfReference, item.at,
                "the value shown here names its own parameter, which would never end; the module "
                "leaves the rest of the text as it is",
                "write values without \"##\"");
        } else {
            add(kind::kValueWithPlaceholder, item.at,
                "the value shown here holds \"##\", which the module fills again",
                "write values without \"##\"");
        }
    }

    void checkEnumeration(const MapItem& item, unsigned position)
    {
        if (enumerations_ == nullptr) {
            return;
        }
        for (const auto& parameter : enumeratedParameters(definition_)) {
            const auto* literal = literalOf(parameter.type, item.raw());
            if (parameter.position == position && literal != nullptr && *literal != item.raw()) {
                add(kind::kMapBehindEnumeration, item.at,
                    "the enumeration " + parameter.type + " turns \"" + item.raw() + "\" into \"" +
                        *literal + "\" before the map is looked at",
                    "use either the map or the enumeration for this parameter");
            }
        }
    }

    const std::string* literalOf(const std::string& type, const std::string& value) const
    {
        for (const auto& enumeration : *enumerations_) {
            for (const auto& literal : enumeration.literals) {
                if (enumeration.name.text + "_" + literal.value.text == type + "_" + value) {
                    return &literal.name.text;
                }
            }
        }
        return nullptr;
    }

    void checkShared(const Block& block, Owner owner, const std::vector<MapItem>& items)
    {
        for (auto other = placeholders_.cbegin(); other != owner; ++other) {
            const bool taken =
                other->number() != owner->number() &&
                std::any_of(items.begin(), items.end(), [this, other](const MapItem& item) {
                    return item.shown() != item.raw() &&
                           shownFor(other->number(), item.raw()) == item.shown();
                });
            if (taken && block.open - other->at < 8) {
                add(kind::kMapShared, block.open,
                    "parameter " + std::to_string(other->number()) +
                        " takes this map as well: its \"##\" is at most 7 characters before it",
                    "put more text between the two placeholders, and two digits into each");
            }
        }
    }

    void add(const FindingKind& kind, std::size_t at, const std::string& message,
             const std::string& advice)
    {
        findings_.add(kind, file_.placeIn(*definition_.of(Member::Detail).value, at), message,
                      advice);
    }

    const JsonDocument& file_;
    const Definition& definition_;
    const std::vector<Enumeration>* enumerations_;
    Findings& findings_;
    const std::string& detail_;
    std::vector<PlaceholderText> placeholders_;
};

}  // namespace

void checkValueMaps(const JsonDocument& file, const Definition& definition,
                    const std::vector<Enumeration>* enumerations, Findings& findings)
{
    ValueMapChecks checks(file, definition, enumerations, findings);
    checks.checkDetail();
    checks.checkOther(Member::Location);
    checks.checkOther(Member::Suggestion);
}

}  // namespace talvik::ctl
