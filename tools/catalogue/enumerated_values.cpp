#include "tools/catalogue/enumerated_values.h"

#include "tools/catalogue/alarm_texts.h"

#include <algorithm>

namespace talvik::ctl {

namespace {

/// False for one that the module skips.
bool isComplete(const Literal& literal)
{
    return literal.value.value != nullptr && literal.name.value != nullptr;
}

}  // namespace

EnumeratedValues::EnumeratedValues(const Definition& definition,
                                   const std::vector<Enumeration>* enumerations)
    : definition_(definition),
      enumerations_(enumerations)
{
}

std::vector<EnumeratedValues::Replacement>
EnumeratedValues::replacementsOf(unsigned position, const std::string& raw) const
{
    std::vector<Replacement> found;
    for (const auto& parameter : enumeratedParameters(definition_)) {
        const auto* literal =
            parameter.position == position ? literalOf(parameter.type, raw) : nullptr;
        if (literal != nullptr && *literal != raw) {
            found.push_back({parameter.type, *literal});
        }
    }
    return found;
}

bool EnumeratedValues::canCome(unsigned position, const std::string& raw) const
{
    const auto replacements = replacementsOf(position, raw);
    return std::all_of(replacements.begin(), replacements.end(),
                       [&](const auto& each) { return hasLiteral(each.type, raw); });
}

bool EnumeratedValues::canBeEmpty(unsigned position) const
{
    const auto parameters = enumeratedParameters(definition_);
    return std::any_of(parameters.begin(), parameters.end(), [&](const auto& parameter) {
        return parameter.position == position &&
               (enumerations_ == nullptr || hasLiteral(parameter.type, ""));
    });
}

const std::string* EnumeratedValues::literalOf(const std::string& type,
                                               const std::string& value) const
{
    if (enumerations_ == nullptr) {
        return nullptr;
    }
    for (const auto& enumeration : *enumerations_) {
        for (const auto& literal : enumeration.literals) {
            if (isComplete(literal) &&
                enumeration.name.text + "_" + literal.value.text == type + "_" + value) {
                return &literal.name.text;
            }
        }
    }
    return nullptr;
}

bool EnumeratedValues::hasLiteral(const std::string& type, const std::string& name) const
{
    for (const auto& enumeration : *enumerations_) {
        const auto& literals = enumeration.literals;
        if (enumeration.name.text == type &&
            std::any_of(literals.begin(), literals.end(), [&name](const auto& literal) {
                return isComplete(literal) && literal.name.text == name;
            })) {
            return true;
        }
    }
    return false;
}

}  // namespace talvik::ctl
