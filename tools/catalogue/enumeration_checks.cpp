#include "tools/catalogue/checks.h"

#include "tools/catalogue/alarm_texts.h"
#include "tools/catalogue/finding_kinds.h"

#include <algorithm>
#include <map>
#include <set>

namespace talvik::ctl {

namespace {

constexpr unsigned kLastPosition = 99;  // the last that a placeholder can name

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
            if (!item.empty() && text_ != "None" && !isWellFormed(item, at)) {
                add(kind::kParamDescItem, at,
                    "\"" + item + "\" " +
                        (item.find('=') == std::string::npos
                             ? "has no \"=\", so the module skips it"
                             : "is not of the form position=Type, so the module looks for a "
                               "parameter or an enumeration that is not meant"),
                    "write items as 0=DiskState, with positions from 0 to 99 and without blanks");
            }
            at = end + 1;
        }
    }

    void checkPositions()
    {
        std::set<unsigned> used;
        for (const auto member : {Member::Location, Member::Detail, Member::Suggestion}) {
            for (const auto& placeholder :
                 placeholdersIn(definition_.of(member).text, member == Member::Detail)) {
                used.insert(placeholder.number());
            }
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
            } else if (used.count(parameter.position) == 0 && parameter.position <= kLastPosition) {
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
            if (!known && isWellFormed(itemAt(parameter.at), parameter.at)) {
                add(kind::kUnknownEnumeration, parameter.at,
                    "there is no enumeration \"" + parameter.type + "\": parameter " +
                        std::to_string(parameter.position) + " is shown as the back end sends it",
                    "define the enumeration, or correct its name");
            }
        }
    }

private:
    std::string itemAt(std::size_t at) const { return text_.substr(at, text_.find(',', at) - at); }

    bool isWellFormed(const std::string& item, std::size_t at) const
    {
        const auto parameter = std::find_if(parameters_.begin(), parameters_.end(),
                                            [at](const auto& each) { return each.at == at; });
        return parameter != parameters_.end() && parameter->position <= kLastPosition &&
               !parameter->type.empty() && parameter->type.front() != ' ' && item.back() != ' ';
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
    EnumerationChecks(const JsonDocument& file, Findings& findings)
        : file_(file),
          findings_(findings)
    {
    }

    void check(const Enumeration& enumeration, const std::set<std::string>& used)
    {
        if (enumeration.name.value == nullptr) {
            return;  // the module reads no further
        }
        const auto place = file_.placeOf(*enumeration.name.value);
        if (enumeration.literals.empty()) {
            findings_.add(kind::kEmptyEnumeration, place,
                          "the enumeration " + enumeration.name.text + " has no values",
                          "add \"enum_member\" with its values");
        }
        if (used.count(enumeration.name.text) == 0) {
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
        checkCharacters(file_, *literal.name.value, subject, findings_);
        const auto mark = literal.name.text.find("##");
        if (mark != std::string::npos) {
            findings_.add(kind::kValueWithPlaceholder, file_.placeIn(*literal.name.value, mark),
                          subject + " holds \"##\", which the module fills again",
                          "write literals without \"##\"");
        }
    }

    const JsonDocument& file_;
    Findings& findings_;
    std::map<std::string, std::size_t> lines_;
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
    std::set<std::string> used;
    for (const auto& definition : definitions) {
        for (const auto& parameter : enumeratedParameters(definition)) {
            used.insert(parameter.type);
        }
    }
    EnumerationChecks checks(file, findings);
    for (const auto& enumeration : enumerations) {
        checks.check(enumeration, used);
    }
}

}  // namespace talvik::ctl
