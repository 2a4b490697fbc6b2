#include "tools/catalogue/value_trial.h"

#include "alarmconfig/alarm_substitution.h"
#include "alarmconfig/alarm_text.h"
#include "tools/catalogue/alarm_texts.h"
#include "tools/catalogue/module_log.h"

#include <algorithm>

namespace talvik::ctl {

namespace {

/// The first text that the module refuses with these fields.
std::optional<Member> refusedText(const Definition& definition, std::vector<std::string> fields)
{
    const auto& detail = definition.of(Member::Detail).text;
    ValuePairs pairs;
    parserParmeterByDetail(fields, pairs, detail);
    for (const auto member : {Member::Location, Member::Detail, Member::Suggestion}) {
        auto text = definition.of(member).text;
        if (member == Member::Detail) {
            replaceBraceWithEmptyString(text);
        }
        if (!pairs.empty() && !filled(text, pairs)) {
            return member;
        }
    }
    return std::nullopt;
}

}  // namespace

ValueTrial tryValue(const Definition& definition, unsigned position, const std::string& field)
{
    ValueTrial trial;
    const auto ordinary = sampleFields();
    if (position >= ordinary.size()) {
        return trial;  // no placeholder names it
    }
    auto fields = ordinary;
    fields[position] = field;
    ModuleLog log;
    trial.refused = refusedText(definition, fields);
    const auto lines = log.take();
    trial.isEndless = std::any_of(lines.begin(), lines.end(), [](const auto& line) {
        return line.text.find("leads back to itself") != std::string::npos;
    });
    if (trial.refused && refusedText(definition, ordinary)) {
        trial.refused.reset();  // whatever the value
    }
    return trial;
}

}  // namespace talvik::ctl
