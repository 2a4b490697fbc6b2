// The steps of `getAlarmInfo` that belong to the parser: fields, literals, texts.

#include "alarmconfig/alarm_config_parser.h"
#include "alarmconfig/alarm_substitution.h"
#include "alarmconfig/alarm_text.h"
#include "alarmconfig/step_log.h"
#include "platform/snmp_util.h"

#include <algorithm>
#include <utility>

void CAlarmConfigParser::parseAlarmParamList(std::string params, std::vector<std::string>& list)
{
    if (params.empty()) {
        return;
    }
    const auto first = list.size();
    const auto commas = std::count(params.begin(), params.end(), COMMA.front());
    const bool escapes = params.find(AMPERSAND.front()) != std::string::npos;
    list.reserve(first + static_cast<std::size_t>(commas) + 1);
    SnmpUtil::SplitToStr(std::move(params), COMMA.front(), list);
    for (auto i = first; escapes && i < list.size(); ++i) {
        auto& field = list[i];
        // Contract: the comma first; back ends escape an ampersand last, so that "&#38;#44;" is the
        // text "&#44;" and no comma.
        field = relpacestr(std::move(field), ESC_COMMA, COMMA);
        field = relpacestr(std::move(field), ECS_AMPERSAND, AMPERSAND);
    }
}

void CAlarmConfigParser::replaceAlarmParamEnumValueDesc(
    const unsigned long long& alarmId, std::vector<std::string>& list,
    const std::vector<std::pair<unsigned int, std::string>>& enumPositions)
{
    constexpr const char* label = "replaceAlarmParamEnumValueDesc";
    talvik::StepLog log(__PRETTY_FUNCTION__);
    for (const auto& [position, type] : enumPositions) {
        if (position >= list.size()) {
            // Contract: "enume" and "rang", and the count as the range's end; log filters match on
            // the text.
            log.guard().warn(talvik::log_code::kAlarmId, label, __LINE__,
                             "alarm %llu parameter enume value %d is out of rang[0, %d]", alarmId,
                             static_cast<int>(position), static_cast<int>(list.size()));
            continue;
        }
        const auto key = type + "_" + list[position];
        const auto literal = enumLiterals.find(key);
        if (literal == enumLiterals.end()) {
            log.guard().warn(talvik::log_code::kEnumLiteral, label, __LINE__,
                             "not found enum value literal desc of key %s in map", key.c_str());
            continue;
        }
        list[position] = literal->second;
    }
}

int CAlarmConfigParser::replaceAlarmParamInfo(std::string text, std::string& out,
                                              const ValuePairs& pairs)
{
    std::string spare;
    return talvik::fillText(text, out, pairs, spare);
}
