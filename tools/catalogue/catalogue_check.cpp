#include "tools/catalogue/catalogue_check.h"

#include "tools/catalogue/checks.h"

#include <optional>

namespace talvik::ctl {

namespace {

void checkDefinition(const JsonDocument& file, const Definition& definition,
                     const std::vector<Enumeration>* enumerations, Findings& findings)
{
    checkTexts(file, definition, findings);
    checkPlaceholders(file, definition, findings);
    checkValueMaps(file, definition, enumerations, findings);
    checkParamDesc(file, definition, enumerations, findings);
}

}  // namespace

CheckResult checkCatalogue(const JsonDocument& definitions, const JsonDocument* enumerations)
{
    CheckResult result;
    auto& findings = result.findings;
    std::vector<Definition> alarms;
    if (definitions.isJson(findings)) {
        alarms = readDefinitions(definitions, findings);
        checkIds(definitions, alarms, findings);
        checkOids(definitions, alarms, findings);
    }
    std::optional<std::vector<Enumeration>> types;
    if (enumerations != nullptr && enumerations->isJson(findings)) {
        types = readEnumerations(*enumerations, findings);
        checkEnumerations(*enumerations, *types, alarms, findings);
        result.enumerations = types->size();
    }
    for (const auto& alarm : alarms) {
        if (!alarm.isIgnored) {
            checkDefinition(definitions, alarm, types ? &*types : nullptr, findings);
        }
    }
    result.alarms = alarms.size();
    findings.sort(definitions.path());
    return result;
}

}  // namespace talvik::ctl
