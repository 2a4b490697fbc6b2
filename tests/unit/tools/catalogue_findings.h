#pragma once

#include "tools/catalogue/catalogue_check.h"
#include "tools/catalogue/json_document.h"

#include <string>
#include <vector>

namespace talvik::test {

/// What `talvikctl catalogue check` finds in two files of these texts; without the second where it
/// is empty.
inline ctl::CheckResult check(const std::string& definitions, const std::string& enumerations)
{
    const ctl::JsonDocument first("alarms.json", definitions);
    const ctl::JsonDocument second("enums.json", enumerations);
    return ctl::checkCatalogue(first, enumerations.empty() ? nullptr : &second);
}

inline std::string listed(const ctl::Findings& findings)
{
    std::string text;
    for (const auto& finding : findings.list()) {
        text += finding.place.file + ":" + std::to_string(finding.place.line) + ":" +
                std::to_string(finding.place.column) + " " + finding.kind.code + ": " +
                finding.message + "\n";
    }
    return text;
}

inline std::vector<std::string> codesOf(const ctl::CheckResult& result)
{
    std::vector<std::string> codes;
    for (const auto& finding : result.findings.list()) {
        codes.emplace_back(finding.kind.code);
    }
    return codes;
}

}  // namespace talvik::test
