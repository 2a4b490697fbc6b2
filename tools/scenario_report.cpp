#include "tools/scenario_report.h"

#include "tools/folded_text.h"
#include "tools/progress.h"
#include "tools/safe_text.h"
#include "tools/trap_output.h"

namespace talvik::ctl {

namespace {

using Kind = ScenarioStep::Kind;

std::string placeOf(const ScenarioMoment& moment)
{
    return moment.step.place + (moment.rounds.empty() ? "" : " (" + moment.rounds + ")") + ": ";
}

std::string reported(const char* what, const ScenarioStep& step, std::uint32_t serial)
{
    return std::string(what) + " " + std::to_string(step.report.id) + ", serial number " +
           std::to_string(serial) + (step.name.empty() ? "" : ", as " + step.name);
}

std::string outcomeOf(const ScenarioStep& step, std::uint32_t serial)
{
    switch (step.kind) {
    case Kind::Raise:
        return reported("raised", step, serial);
    case Kind::Event:
        return reported("reported", step, serial);
    case Kind::Clear:
        return "cleared " + step.name + ", serial number " + std::to_string(serial);
    case Kind::Pause:
        return "paused for " + std::to_string(step.pauseMs) + " ms";
    case Kind::Repeat:
        break;
    }
    return {};
}

const char* nameOf(Kind kind)
{
    switch (kind) {
    case Kind::Raise:
        return "raise";
    case Kind::Event:
        return "event";
    case Kind::Clear:
        return "clear";
    case Kind::Pause:
        return "pause";
    case Kind::Repeat:
        break;
    }
    return "repeat";
}

Json::Value jsonOf(const ScenarioMoment& moment, const char* verb)
{
    const auto& step = moment.step;
    Json::Value value;
    value["step"] = step.place;
    value[verb] = nameOf(step.kind);
    if (!moment.rounds.empty()) {
        value["round"] = moment.rounds;
    }
    if (step.kind == Kind::Raise || step.kind == Kind::Event) {
        value["id"] = std::to_string(step.report.id);
    }
    if (!step.name.empty()) {
        value["as"] = validUtf8(step.name);
    }
    if (step.kind == Kind::Pause) {
        value["pauseMs"] = step.pauseMs;
    }
    return value;
}

}  // namespace

void ScenarioText::begins(const ScenarioMoment& moment, const ScenarioCounts& counts)
{
    const auto failed =
        counts.failed == 0 ? std::string() : ", " + std::to_string(counts.failed) + " failed";
    Progress::ofThisProgram().tell("step " + std::to_string(moment.number) + " of " +
                                   std::to_string(counts.total) + failed);
}

void ScenarioText::succeeded(const ScenarioMoment& moment, std::uint32_t serial)
{
    constexpr std::size_t kIndent = 4;
    const auto text = placeOf(moment) + printable(outcomeOf(moment.step, serial));
    Progress::ofThisProgram().around(
        [&] { out_ << foldedText(text, style_, kIndent) << std::flush; });
}

void ScenarioText::failed(const ScenarioMoment& moment, const Failure& failure)
{
    Progress::ofThisProgram().around([&] {
        errors_ << "talvikctl: " << placeOf(moment) << printable(failure.what()) << "; "
                << printable(failure.advice()) << std::endl;
    });
}

void ScenarioText::ended(const ScenarioCounts& counts)
{
    Progress::ofThisProgram().finish();
    if (counts.stopped) {
        errors_ << "talvikctl: stopped after " << counts.done << " of " << counts.total
                << " steps; the others were not tried\n";
    } else if (counts.failed != 0) {
        errors_ << "talvikctl: " << counts.failed << " of " << counts.total << " steps failed\n";
    } else {
        out_ << "done: " << counts.done << (counts.done == 1 ? " step\n" : " steps\n");
    }
}

void ScenarioJson::begins(const ScenarioMoment& /*moment*/, const ScenarioCounts& /*counts*/) {}

void ScenarioJson::succeeded(const ScenarioMoment& moment, std::uint32_t serial)
{
    auto value = jsonOf(moment, "did");
    if (serial != 0) {
        value["serial"] = serial;
    }
    out_ << jsonLine(value) << std::flush;
}

void ScenarioJson::failed(const ScenarioMoment& moment, const Failure& failure)
{
    auto value = jsonOf(moment, "failed");
    const auto why = failureJson(failure);
    value["reason"] = why["reason"];
    value["advice"] = why["advice"];
    out_ << jsonLine(value) << std::flush;
}

void ScenarioJson::ended(const ScenarioCounts& counts)
{
    Json::Value value;
    value["total"] = static_cast<Json::UInt64>(counts.total);
    value["done"] = static_cast<Json::UInt64>(counts.done);
    value["failed"] = static_cast<Json::UInt64>(counts.failed);
    value["stopped"] = counts.stopped;
    out_ << jsonLine(value);
}

}  // namespace talvik::ctl
