#include "tools/alarm_scenario.h"

#include "backend/alarm_commands.h"
#include "tools/scenario_element.h"

#include <limits>
#include <set>

namespace talvik::ctl {

namespace {

using Kind = ScenarioStep::Kind;
using Names = std::set<std::string>;

// NOLINTBEGIN(misc-no-recursion): what follows goes at most kMaxDepth deep

std::vector<ScenarioStep> readSteps(const ScenarioElement& list, std::uint32_t depth);

std::uint32_t readSeverity(const ScenarioElement& report, const char* fallback)
{
    if (!report.has("severity")) {
        return *severityLevel(fallback);
    }
    const auto element = report.at("severity");
    const auto written = element.textOrNumber();
    const auto level = severityLevel(written);
    if (!level) {
        element.refuse("\"" + written + "\" is no severity; known are " + severityNames());
    }
    return *level;
}

std::string readParameters(const ScenarioElement& report)
{
    if (!report.has("params")) {
        return {};
    }
    std::vector<std::string> values;
    for (const auto& element : report.at("params").list()) {
        values.push_back(element.text());
        const auto refusal = parameterRefusal(values.back());
        if (!refusal.empty()) {
            element.refuse(refusal);
        }
    }
    auto joined = joinedParameters(values);
    if (joined.size() > backend::kMaxParameters) {
        report.at("params").refuse("the parameters have " + std::to_string(joined.size()) +
                                   " bytes together, at most " +
                                   std::to_string(backend::kMaxParameters) + " are possible");
    }
    return joined;
}

AlarmReport readReport(const ScenarioElement& element, const char* severity)
{
    AlarmReport report;
    const auto id = element.at("id");
    const auto number = wholeNumber(id.text(), 1, std::numeric_limits<std::uint64_t>::max());
    if (!number) {
        id.refuse("\"" + id.text() + "\" is no alarm id: digits, 1 to 18446744073709551615");
    }
    report.id = *number;
    report.severity = readSeverity(element, severity);
    report.parameters = readParameters(element);
    if (element.has("time")) {
        report.time = element.at("time").number(0, backend::kMaxTime);
    }
    return report;
}

std::string readName(const ScenarioElement& element)
{
    auto name = element.text();
    if (name.empty()) {
        element.refuse("expected a name that is not empty");
    }
    return name;
}

void readRaise(const ScenarioElement& raise, ScenarioStep& step)
{
    raise.expectObject({"id"}, {"params", "severity", "time", "as"});
    step.kind = Kind::Raise;
    step.report = readReport(raise, kAlarmSeverity);
    if (raise.has("as")) {
        step.name = readName(raise.at("as"));
    }
}

void readEvent(const ScenarioElement& event, ScenarioStep& step)
{
    event.expectObject({"id"}, {"params", "severity", "time"});
    step.kind = Kind::Event;
    step.report = readReport(event, kEventSeverity);
}

void readRepeat(const ScenarioElement& repeat, std::uint32_t depth, ScenarioStep& step)
{
    if (depth == kMaxDepth) {
        repeat.refuse("repeats stand within each other " + std::to_string(kMaxDepth) +
                      " deep at most");
    }
    repeat.expectObject({"times", "steps"}, {});
    step.kind = Kind::Repeat;
    step.times = static_cast<std::uint32_t>(repeat.at("times").number(1, kMaxRepeats));
    step.steps = readSteps(repeat.at("steps"), depth + 1);
}

ScenarioStep readStep(const ScenarioElement& element, std::uint32_t depth)
{
    ScenarioStep step;
    step.place = element.place();
    const auto kind = element.onlyMember();
    const auto content = element.at(kind);
    if (kind == "raise") {
        readRaise(content, step);
    } else if (kind == "event") {
        readEvent(content, step);
    } else if (kind == "clear") {
        step.kind = Kind::Clear;
        step.name = readName(content);
    } else if (kind == "pauseMs") {
        step.pauseMs = static_cast<std::uint32_t>(content.number(0, kMaxPauseMs));
    } else if (kind == "repeat") {
        readRepeat(content, depth, step);
    } else {
        element.refuse("unknown step \"" + kind +
                       "\"; known are raise, event, clear, pauseMs and repeat");
    }
    return step;
}

std::vector<ScenarioStep> readSteps(const ScenarioElement& list, std::uint32_t depth)
{
    std::vector<ScenarioStep> steps;
    for (const auto& element : list.list()) {
        steps.push_back(readStep(element, depth));
    }
    if (steps.empty()) {
        list.refuse("expected at least one step");
    }
    return steps;
}

std::uint64_t countSteps(const std::vector<ScenarioStep>& steps, const ScenarioElement& top)
{
    std::uint64_t count = 0;
    for (const auto& step : steps) {
        count += step.kind == Kind::Repeat ? step.times * countSteps(step.steps, top) : 1;
        if (count > kMaxScenarioSteps) {
            top.refuse("with all repeats these are more than " + std::to_string(kMaxScenarioSteps) +
                       " steps, at " + step.place);
        }
    }
    return count;
}

/// Follows which names have an alarm. What a repeat leaves behind after its second round it leaves
/// behind after every later one, so two rounds show all.
void checkNames(const std::vector<ScenarioStep>& steps, Names& raised, const ScenarioElement& top)
{
    for (const auto& step : steps) {
        if (step.kind == Kind::Raise && !step.name.empty() && !raised.insert(step.name).second) {
            top.refuse("\"" + step.name + "\" is raised again before it is cleared, at " +
                       step.place);
        }
        if (step.kind == Kind::Clear && raised.erase(step.name) == 0) {
            top.refuse("\"" + step.name + "\" is cleared, but no alarm has that name then, at " +
                       step.place);
        }
        for (std::uint32_t round = 0; round < step.times && round < 2; ++round) {
            checkNames(step.steps, raised, top);
        }
    }
}

// NOLINTEND(misc-no-recursion)

}  // namespace

AlarmScenario AlarmScenario::load(const std::string& path)
{
    const auto document = parseScenarioFile(path);
    const ScenarioElement top(document, path, "");
    top.expectObject({"steps"}, {});
    AlarmScenario scenario;
    scenario.steps_ = readSteps(top.at("steps"), 0);
    scenario.total_ = countSteps(scenario.steps_, top);
    Names raised;
    checkNames(scenario.steps_, raised, top);
    return scenario;
}

}  // namespace talvik::ctl
