#include "tools/catalogue/checks.h"

#include "alarmconfig/alarm_substitution.h"
#include "alarmconfig/alarm_text.h"
#include "tools/catalogue/alarm_texts.h"
#include "tools/catalogue/finding_kinds.h"
#include "tools/catalogue/module_log.h"

#include <algorithm>
#include <optional>
#include <set>

namespace talvik::ctl {

namespace {

constexpr const char* kTwoDigits = "write the position with two digits, ##00 to ##99";

/// Looks at one definition. What a text becomes is asked of the module, with more parameters than
/// a text can name, so that what is not filled never will be.
class PlaceholderChecks {
public:
    PlaceholderChecks(const JsonDocument& file, const Definition& definition, Findings& findings)
        : file_(file),
          definition_(definition),
          findings_(findings)
    {
        auto fields = sampleFields();
        const auto& detail = definition.of(Member::Detail).text;
        parserParmeterByDetail(fields, samplePairs_, std::string());
        parserParmeterByDetail(fields, pairs_, detail);
        const auto blocks = blocksIn(detail);
        hasOpenBlock_ = !blocks.empty() && blocks.back().close == std::string::npos;
        for (const auto& mark : marksIn(detail).marks) {
            inDetail_.insert(mark.number);
        }
    }

    void checkFilled(Member member)
    {
        const auto& text = definition_.of(member);
        if (text.value == nullptr) {
            return;
        }
        const auto before = findings_.list().size();
        const bool isDetail = member == Member::Detail;
        for (const auto& placeholder : placeholdersIn(text.text, isDetail)) {
            checkForm(member, placeholder);
        }
        if (!isDetail) {
            checkKnownToDetail(member);
        }
        auto filledText = text.text;
        if (isDetail) {
            replaceBraceWithEmptyString(filledText);
        }
        tryWithModule(member, filledText, findings_.list().size() > before);
    }

    void checkUnfilled(Member member)
    {
        const auto& text = definition_.of(member);
        const auto found = placeholdersIn(text.text, false);
        if (!found.empty()) {
            findings_.add(kind::kPlaceholderNotFilled, file_.placeIn(*text.value, found.front().at),
                          definition_.subject(member) + " stays as written, placeholders included",
                          "use placeholders in \"location\", \"detail\" and \"suggestion\" only");
        }
    }

private:
    void checkForm(Member member, const PlaceholderText& placeholder)
    {
        const auto& text = definition_.of(member).text;
        const auto position = placeholder.position.substr(0, placeholder.position.find('{'));
        const auto behind = placeholder.at + 4;
        if (placeholder.isTwoDigits()) {
            if (behind < text.size() && text[behind] >= '0' && text[behind] <= '9') {
                add(kind::kPlaceholderThreeDigits, member, placeholder.at,
                    quotedPart(text, placeholder.at, 5) + shownFor(text, placeholder.at) +
                        ", and the digit behind it stays",
                    "positions have two digits; put a blank between the value and the digit if it "
                    "is meant");
            }
        } else if (position.empty()) {
            return;  // the module's answer tells
        } else if (position.front() >= '0' && position.front() <= '9') {
            add(kind::kPlaceholderOneDigit, member, placeholder.at,
                quotedPart(text, placeholder.at, 4) + shownFor(text, placeholder.at) +
                    (position.size() == 2 ? ", and the character behind the digit is lost" : ""),
                kTwoDigits);
        } else {
            add(kind::kPlaceholderNoPosition, member, placeholder.at,
                quotedPart(text, placeholder.at, 4) + shownFor(text, placeholder.at) +
                    ": what follows \"##\" is no position",
                kTwoDigits);
        }
    }

    void checkKnownToDetail(Member member)
    {
        std::set<unsigned> told;
        for (const auto& placeholder : placeholdersIn(definition_.of(member).text, false)) {
            const auto number = placeholder.number();
            if (placeholder.isTwoDigits() && inDetail_.count(number) == 0 &&
                told.insert(number).second) {
                const auto shown = shownWithout(number, placeholder);
                if (shown != kNoValue) {
                    add(kind::kPlaceholderNotInDetail, member, placeholder.at,
                        "\"detail\" does not use parameter " + std::to_string(number) +
                            ": an alarm that comes with those before it only shows " + shown +
                            " here, not --",
                        "use it in \"detail\", too, unless the back end always sends it");
                }
            }
        }
    }

    /// What the module shows for `placeholder` of parameter `number` when this does not come.
    std::string shownWithout(unsigned number, const PlaceholderText& placeholder) const
    {
        auto fields = sampleFields();
        fields.resize(number);
        ValuePairs pairs;
        parserParmeterByDetail(fields, pairs, definition_.of(Member::Detail).text);
        const auto text = "##" + std::string(placeholder.position);
        const ModuleLog quiet;
        return pairs.empty() ? text : filled(text, pairs).value_or(text);
    }

    void tryWithModule(Member member, const std::string& text, bool explained)
    {
        ModuleLog log;
        if (!filled(text, samplePairs_)) {
            add(kind::kPlaceholderAtEnd, member, std::min(text.rfind("##"), text.size()),
                definition_.subject(member) + " ends in \"##\" without a position: " +
                    (pairs_.empty() ? "the module fills no text of this alarm"
                                    : "the module refuses to show the alarm (0x100400F)"),
                kTwoDigits);
            return;
        }
        log.take();
        filled(text, pairs_);
        const auto lines = log.take();
        if (!lines.empty() && !explained && !hasOpenBlock_) {
            findings_.add(kind::kModuleWarning, definition_.place(file_, member),
                          "the module warns when it fills " + definition_.subject(member) + ": " +
                              lines.front().text,
                          "compare the text with what talvikctl catalogue expand makes of it");
        }
    }

    static std::string quotedPart(const std::string& text, std::size_t at, std::size_t length)
    {
        return "\"" + text.substr(at, length) + "\"";
    }

    /// What the module shows for the placeholder at `at`.
    std::string shownFor(const std::string& text, std::size_t at) const
    {
        const ModuleLog quiet;
        const auto shown = filled(std::string_view(text).substr(at, 4), samplePairs_);
        return " shows " + shown.value_or("nothing");
    }

    void add(const FindingKind& kind, Member member, std::size_t at, const std::string& message,
             const std::string& advice)
    {
        findings_.add(kind, file_.placeIn(*definition_.of(member).value, at), message, advice);
    }

    const JsonDocument& file_;
    const Definition& definition_;
    Findings& findings_;
    ValuePairs samplePairs_;  // every position with its field
    ValuePairs pairs_;        // as the detail makes them
    bool hasOpenBlock_ = false;
    std::set<unsigned> inDetail_;
};

}  // namespace

void checkPlaceholders(const JsonDocument& file, const Definition& definition, Findings& findings)
{
    PlaceholderChecks checks(file, definition, findings);
    for (const auto member : {Member::Location, Member::Detail, Member::Suggestion}) {
        checks.checkFilled(member);
    }
    for (const auto member : {Member::Name, Member::Reason}) {
        checks.checkUnfilled(member);
    }
}

}  // namespace talvik::ctl
