#include "tools/catalogue/checks.h"

#include "alarmconfig/alarm_substitution.h"
#include "tools/catalogue/alarm_texts.h"
#include "tools/catalogue/enumerated_values.h"
#include "tools/catalogue/finding_kinds.h"
#include "tools/catalogue/value_trial.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace talvik::ctl {

namespace {

constexpr auto kNowhere = std::string::npos;

/// Looks at the blocks in braces of one definition. What a text becomes is asked of the module.
class ValueMapChecks {
public:
    ValueMapChecks(const JsonDocument& file, const Definition& definition,
                   const std::vector<Enumeration>* enumerations, Findings& findings)
        : file_(file),
          definition_(definition),
          values_(definition, enumerations),
          findings_(findings),
          detail_(definition.of(Member::Detail).text),
          marks_(marksIn(detail_))
    {
    }

    void checkDetail()
    {
        for (const auto& block : blocksIn(detail_)) {
            if (block.close == kNowhere) {
                addOpen(block);
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
    void addOpen(const Block& block)
    {
        const auto lost =
            marks_.stop == kNowhere
                ? std::string()
                : ", and parameters that no placeholder before \"" +
                      detail_.substr(marks_.stop, kPlaceholderMark.size() + kPositionDigits) +
                      "\" names are not shown";
        add(kind::kMapNotClosed, block.open,
            "this \"{\" is never closed: the text from here on stays as written" + lost,
            "close it with \"}\"");
    }

    void checkBlock(const Block& block)
    {
        std::vector<DetailMark> takers;
        std::copy_if(marks_.marks.begin(), marks_.marks.end(), std::back_inserter(takers),
                     [&block](const auto& mark) { return mark.open == block.open; });
        const auto items = itemsIn(detail_, block);
        if (detail_.find('{', block.open + 1) < block.close) {
            add(kind::kMapNested, block.open,
                "there is another \"{\" between this one and the next \"}\", where this block "
                "ends: braces do not nest",
                "write values without braces");
        } else if (items.empty()) {
            addWithoutEffect(block, "the module removes these braces: there is nothing in them",
                             "write raw:shown between them, or remove them");
        } else if (takers.empty()) {
            addWithoutPlaceholder(block);
        } else {
            checkTaken(block, items, takers);
        }
    }

    void addWithoutPlaceholder(const Block& block)
    {
        const auto last = detail_.rfind(kPlaceholderMark, block.open);
        if (last == kNowhere) {
            addWithoutEffect(block,
                             "the module removes this text in braces: there is no placeholder "
                             "before it that it could belong to",
                             "use other brackets, or put it behind the placeholder whose values it "
                             "explains");
            return;
        }
        const auto between = detail_.find_first_of("{}", last);
        addWithoutEffect(
            block,
            between == block.open
                ? "the module removes this map without using it: its \"{\" is more than 7 "
                  "characters behind the \"##\" before it"
                : "the module removes this map without using it: there is another brace between it "
                  "and the \"##\" before it",
            "put the map directly behind its placeholder");
    }

    /// Looks at a block that `takers`, at least one, take as their map.
    void checkTaken(const Block& block, const std::vector<MapItem>& items,
                    const std::vector<DetailMark>& takers)
    {
        const auto& owner = takers.back();
        if (!owner.isFirst) {
            add(kind::kMapNotFirst, block.open,
                "this map has no effect on parameter " + std::to_string(owner.number) +
                    ", which is used before: its first use decides how it is shown",
                "move the map to the first \"##\" with this position");
        }
        const DetailMark* user = owner.isFirst ? &owner : nullptr;
        for (const auto& taker : takers) {
            if (taker.isFirst && &taker != &owner) {
                add(kind::kMapShared, block.open,
                    "parameter " + std::to_string(taker.number) +
                        " takes this map as well: its \"##\" is at most 7 characters before it",
                    "put more text between the two placeholders, and two digits into each");
                user = user == nullptr ? &taker : user;
            }
        }
        if (user != nullptr) {
            checkItems(block, items, user->number);
        }
    }

    void checkItems(const Block& block, const std::vector<MapItem>& items, unsigned position)
    {
        std::set<std::string> raws;
        bool changes = false;
        bool isUsable = false;
        for (const auto& item : items) {
            if (!item.isWellFormed()) {
                add(kind::kMapItem, item.at,
                    "the module cannot use \"" + std::string(item.text) +
                        "\": an item is raw:shown with one colon exactly",
                    "write one colon; texts that are shown can have neither colon nor semicolon");
                continue;
            }
            isUsable = true;
            const bool isNew = raws.insert(item.raw()).second;
            changes = changes || (isNew && item.shown() != item.raw());
            if (!isNew) {
                add(kind::kMapRepeatedValue, item.at,
                    "\"" + item.raw() + "\" is in this map before; the first one counts",
                    "remove one of the two");
            } else if (item.raw().empty() && !values_.canBeEmpty(position)) {
                add(kind::kMapEmptyValue, item.at,
                    "no value is empty when the map is looked at: the module has made it \"--\" "
                    "by then",
                    "write \"--\" before the colon for a value that comes empty");
            } else {
                checkItem(item, position);
            }
        }
        if (isUsable && !changes) {
            addWithoutEffect(block, "this map changes nothing: it shows every value as it comes",
                             "write what is to be shown behind the colons");
        }
    }

    void checkItem(const MapItem& item, unsigned position)
    {
        const auto raw = item.raw();
        const auto shown = item.shown();
        if (!raw.empty() && (raw.front() == ' ' || raw.back() == ' ')) {
            add(kind::kMapBlank, item.at,
                "\"" + raw +
                    "\" begins or ends with a blank, and a value without it does not match",
                "remove the blank unless the back end sends it");
        }
        if (shown != raw) {
            checkShownValue(shown, "what this map shows for \"" + raw + "\"", placeOf(item.at),
                            findings_);
        }
        checkEnumeration(item, position);
        if (shown.find('#') != kNowhere && values_.canCome(position, raw)) {
            checkFilling(item, position);
        }
    }

    /// Tries the item's value, which may hold a placeholder itself.
    void checkFilling(const MapItem& item, unsigned position)
    {
        const auto trial = tryValue(definition_, position, item.raw());
        if (trial.refused) {
            add(kind::kPlaceholderAtEnd, item.at,
                "the value shown here makes " + definition_.subject(*trial.refused) +
                    " end in \"##\" without a position: the module then refuses to show the alarm "
                    "(0x100400F)",
                "write values without \"#\"");
        } else if (trial.isEndless) {
            add(kind::kSelfReference, item.at,
                "the value shown here names its own parameter, which would never end; the module "
                "leaves the rest of the text as it is",
                "write values without \"##\"");
        } else if (item.shown().find(kPlaceholderMark) != kNowhere) {
            add(kind::kValueWithPlaceholder, item.at,
                "the value shown here holds \"##\", which the module fills again",
                "write values without \"##\"");
        }
    }

    void checkEnumeration(const MapItem& item, unsigned position)
    {
        for (const auto& [type, literal] : values_.replacementsOf(position, item.raw())) {
            add(kind::kMapBehindEnumeration, item.at,
                "the enumeration " + type + " turns \"" + item.raw() + "\" into \"" + literal +
                    "\" before the map is looked at",
                "use either the map or the enumeration for this parameter");
        }
    }

    void addWithoutEffect(const Block& block, const std::string& message, const std::string& advice)
    {
        add(kind::kMapWithoutEffect, block.open, message, advice);
    }

    Place placeOf(std::size_t at) const
    {
        return file_.placeIn(*definition_.of(Member::Detail).value, at);
    }

    void add(const FindingKind& kind, std::size_t at, const std::string& message,
             const std::string& advice)
    {
        findings_.add(kind, placeOf(at), message, advice);
    }

    const JsonDocument& file_;
    const Definition& definition_;
    const EnumeratedValues values_;
    Findings& findings_;
    const std::string& detail_;
    DetailMarks marks_;
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
