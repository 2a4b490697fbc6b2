#pragma once

#include "tools/catalogue/catalogue_files.h"

#include <string>
#include <vector>

namespace talvik::ctl {

/// What the enumerations make of an alarm's values before its value maps are looked at.
class EnumeratedValues {
public:
    /// `enumerations` is null when they are not known. Both outlive the object.
    EnumeratedValues(const Definition& definition, const std::vector<Enumeration>* enumerations);

    /// An enumeration that replaces a value.
    struct Replacement {
        std::string type;
        std::string literal;
    };

    /// The enumerations of parameter `position` that replace its value `raw` by something else.
    std::vector<Replacement> replacementsOf(unsigned position, const std::string& raw) const;

    /// False when no value of the parameter is `raw` by then, because it is replaced.
    bool canCome(unsigned position, const std::string& raw) const;

    /// True when a literal may make the parameter's value empty; it never comes so.
    bool canBeEmpty(unsigned position) const;

private:
    const std::string* literalOf(const std::string& type, const std::string& value) const;
    bool hasLiteral(const std::string& type, const std::string& name) const;

    const Definition& definition_;
    const std::vector<Enumeration>* enumerations_;
};

}  // namespace talvik::ctl
