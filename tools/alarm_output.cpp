#include "tools/alarm_output.h"

#include "tools/alarm_input.h"
#include "tools/folded_text.h"
#include "tools/safe_text.h"

#include <algorithm>
#include <ctime>
#include <iterator>
#include <limits>

namespace talvik::ctl {

namespace {

std::string severityText(std::uint32_t level)
{
    const auto name = severityName(level);
    const auto number = std::to_string(level);
    return name ? *name + " (" + number + ")" : number;
}

Tone toneOf(std::uint32_t level)
{
    const auto name = severityName(level).value_or("");
    if (name == "critical") {
        return Tone::Severe;
    }
    if (name == "major") {
        return Tone::Bad;
    }
    if (name == "minor" || name == "warning") {
        return Tone::Warning;
    }
    return Tone::Plain;
}

}  // namespace

TableLine activeAlarmHeading()
{
    return {"SERIAL", "ID", "SEVERITY", "TIME", "PARAMETERS"};
}

TableLine activeAlarmLine(const ActiveAlarm& alarm)
{
    return {std::to_string(alarm.serial),
            std::to_string(alarm.id),
            {severityText(alarm.severity), toneOf(alarm.severity)},
            localIsoTime(alarm.time),
            printable(alarm.parameters)};
}

std::string activeAlarmsText(const std::vector<ActiveAlarm>& alarms, const TableStyle& style)
{
    constexpr std::size_t kParameters = 4;
    if (alarms.empty()) {
        return foldedText("no active alarms", style, 0);
    }
    std::vector<TableLine> lines = {activeAlarmHeading()};
    std::transform(alarms.begin(), alarms.end(), std::back_inserter(lines), activeAlarmLine);
    return alignedTable(lines, style, Columns{{kParameters}});
}

Json::Value activeAlarmJson(const ActiveAlarm& alarm)
{
    const auto name = severityName(alarm.severity);
    Json::Value value;
    value["serial"] = alarm.serial;
    value["id"] = std::to_string(alarm.id);
    value["severity"] = name ? Json::Value(*name) : Json::Value();
    value["level"] = alarm.severity;
    value["time"] = static_cast<Json::UInt64>(alarm.time);
    value["parameters"] = validUtf8(alarm.parameters);
    return value;
}

Json::Value activeAlarmsJson(const std::vector<ActiveAlarm>& alarms)
{
    Json::Value list(Json::arrayValue);
    for (const auto& alarm : alarms) {
        list.append(activeAlarmJson(alarm));
    }
    return list;
}

std::string localIsoTime(std::uint64_t seconds)
{
    constexpr std::size_t kColon = 2;  // from the end of +0100
    const auto time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    char text[64];
    if (seconds > static_cast<std::uint64_t>(std::numeric_limits<std::time_t>::max()) ||
        localtime_r(&time, &parts) == nullptr ||
        std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S%z", &parts) == 0) {
        return std::to_string(seconds);
    }
    std::string iso = text;
    return iso.insert(iso.size() - kColon, ":");
}

}  // namespace talvik::ctl
