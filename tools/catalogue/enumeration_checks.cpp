#include "tools/catalogue/checks.h"

#include "tools/catalogue/alarm_texts.h"
#include "tools/catalogue/finding_kinds.h"
#include "tools/catalogue/value_trial.h"

#include <algorithm>
#include <map>
#include <set>

namespace talvik::ctl {

namespace {

/// Looks at "paramDesc" of one definition.
class ParamDescChecks {
public:
    ParamDescChecks(const JsonDocument& file, const Definition& definition, Findings& findings)
        : file_(file),
          definition_(definition),
          findings_(findings),
          text_(definition.of(Member::ParamDesc).text),
          parameters_(enumeratedParameters(definition))
    {
    }

    void checkForm()
    {
        for (std::size_t at = 0; at < text_.size();) {
            const auto end = std::min(text_.find(',', at), text_.size());
            const auto item = text_.substr(at, end - at);
            if (!item.empty() && text_ != "None" && item.find('=') == std::string::npos) {
                addForm(at, "\"" + item + "\" has no \"=\", so the module skips it");
            }
            at = end + 1;
        }
        for (const auto& parameter : parameters_) {
            if (!parameter.isWellFormed()) {
                addForm(parameter.at, "\"" + std::string(parameter.item) +
                                          "\" is not of the form position=Type: the module reads "
                                          "position " +
                                          std::to_string(parameter.position) +
                                          " and enumeration \"" + parameter.type + "\"");
            }
        }
    }

    void checkPositions()
    {
        std::set<unsigned> used;
        for (const auto member : {Member::Location, Member::Detail, Member::Suggestion}) {
            for (const auto& placeholder : placeholdersIn(definition_.of(member).text, false)) {
                used.insert(placeholder.number());
                used.insert(placeholder.shownNumber());
            }
        }
        for (const auto& mark : marksIn(definition_.of(Member::Detail).text).marks) {
            used.insert(mark.number);
        }
        std::set<unsigned> seen;
        for (const auto& parameter : parameters_) {
            const auto position = std::to_string(parameter.position);
            if (!seen.insert(parameter.position).second) {
                add(kind::kParamDescRepeated, parameter.at,
                    "parameter " + position +
                        " is enumerated before: by now its value is the first enumeration's "
                        "literal, which is looked for in " +
                        parameter.type,
                    "keep one of the two items");
            } else if (parameter.isWellFormed() && used.count(parameter.position) == 0) {
                add(kind::kParamDescUnused, parameter.at,
                    "no text of " + definition_.subject() + " uses parameter " + position,
                    "remove the item, or correct its position: the first parameter is 0");
            }
        }
    }

    void checkTypes(const std::vector<Enumeration>& enumerations)
    {
        for (const auto& parameter : parameters_) {
            const bool known = std::any_of(
                enumerations.begin(), enumerations.end(),
                [&parameter](const auto& each) { return each.name.text == parameter.type; });
            if (!known && parameter.isWellFormed()) {
                add(kind::kUnknownEnumeration, parameter.at,
                    "there is no enumeration \"" + parameter.type + "\": parameter " +
                        std::to_string(parameter.position) + " is shown as the back end sends it",
                    "define the enumeration, or correct its name");
            }
        }
    }

private:
    void addForm(std::size_t at, const std::string& message)
    {
        add(kind::kParamDescItem, at, message,
            "write items as 0=DiskState, with positions from 0 to 99 and without blanks");
    }

    void add(const FindingKind& kind, std::size_t at, const std::string& message,
             const std::string& advice)
    {
        findings_.add(kind, file_.placeIn(*definition_.of(Member::ParamDesc).value, at), message,
                      advice);
    }

    const JsonDocument& file_;
    const Definition& definition_;
    Findings& findings_;
    const std::string& text_;
    std::vector<EnumeratedParameter> parameters_;
};

/// Looks at the enumerations in the file's order, because the first of several literals counts.
class EnumerationChecks {
public:
    EnumerationChecks(const JsonDocument& file, const std::vector<Definition>& definitions,
                      Findings& findings)
        : file_(file),
          findings_(findings)
    {
        for (const auto& definition : definitions) {
            if (definition.isIgnored) {
                continue;
            }
            for (const auto& parameter : enumeratedParameters(definition)) {
                users_[parameter.type].push_back({&definition, parameter.position});
            }
        }
    }

    void check(const Enumeration& enumeration)
    {
        if (enumeration.name.value == nullptr) {
            return;  // the module reads no further
        }
        const auto place = file_.placeOf(*enumeration.name.value);
        checkCharacters(file_, *enumeration.name.value, "the name of an enumeration", Use::Internal,
                        findings_);
        if (enumeration.literals.empty() && !enumeration.hasWrongMembers) {
            findings_.add(kind::kEmptyEnumeration, place,
                          "the enumeration " + enumeration.name.text + " has no values",
                          "add \"enum_member\" with its values");
        }
        if (users_.count(enumeration.name.text) == 0) {
            findings_.add(kind::kUnusedEnumeration, place,
                          "no definition uses the enumeration " + enumeration.name.text,
                          "name it in the \"paramDesc\" of an alarm, or remove it");
        }
        for (const auto& literal : enumeration.literals) {
            check(enumeration, literal);
        }
    }

private:
    void check(const Enumeration& enumeration, const Literal& literal)
    {
        if (literal.name.value == nullptr || literal.value.value == nullptr) {
            return;
        }
        const auto key = enumeration.name.text + "_" + literal.value.text;
        const auto place = file_.placeOf(*literal.value.value);
        const auto [first, fresh] = lines_.try_emplace(key, place.line);
        if (!fresh) {
            findings_.add(kind::kRepeatedLiteral, place,
                          "the literal of " + key + " is in line " + std::to_string(first->second) +
                              " already: the module uses that one",
                          "remove one of the two, or rename the enumeration");
        }
        const auto subject = "the literal of " + key;
        checkCharacters(file_, *literal.value.value, "a value of " + enumeration.name.text,
                        Use::Internal, findings_);
        checkCharacters(file_, *literal.name.value, subject, Use::Shown, findings_);
        if (fresh) {
            checkShownValue(literal.name.text, subject, file_.placeOf(*literal.name.value),
                            findings_);
            checkFilling(enumeration, literal, subject);
        }
    }

    /// Tries the literal with the alarms that show it.
    void checkFilling(const Enumeration& enumeration, const Literal& literal,
                      const std::string& subject)
    {
        const auto hash = literal.name.text.find('#');
        if (hash == std::string::npos) {
            return;
        }
        const auto place = file_.placeIn(*literal.name.value, hash);
        for (const auto& user : users_[enumeration.name.text]) {
            const auto trial = tryValue(*user.definition, user.position, literal.name.text);
            if (trial.refused) {
                findings_.add(kind::kPlaceholderAtEnd, place,
                              subject + " makes " + user.definition->subject(*trial.refused) +
                                  " end in \"##\" without a position: the module then refuses to "
                                  "show the alarm (0x100400F)",
                              "write literals without \"#\"");
                return;
            }
        }
        if (literal.name.text.find("##") != std::string::npos) {
            findings_.add(kind::kValueWithPlaceholder, place,
                          subject + " holds \"##\", which the module fills again",
                          "write literals without \"##\"");
        }
    }

    struct User {
        const Definition* definition;
        unsigned position;
    };

    const JsonDocument& file_;
    Findings& findings_;
    std::map<std::string, std::size_t> lines_;        // of the first literal of each key
    std::map<std::string, std::vector<User>> users_;  // of each enumeration
};

}  // namespace

void checkParamDesc(const JsonDocument& file, const Definition& definition,
                    const std::vector<Enumeration>* enumerations, Findings& findings)
{
    ParamDescChecks checks(file, definition, findings);
    checks.checkForm();
    checks.checkPositions();
    if (enumerations != nullptr) {
        checks.checkTypes(*enumerations);
    }
}

void checkEnumerations(const JsonDocument& file, const std::vector<Enumeration>& enumerations,
                       const std::vector<Definition>& definitions, Findings& findings)
{
    EnumerationChecks checks(file, definitions, findings);
    for (const auto& enumeration : enumerations) {
        checks.check(enumeration);
    }
}

}  // namespace talvik::ctl
