#include "tools/scenario_run.h"

#include "tools/failure.h"
#include "tools/safe_text.h"

namespace talvik::ctl {

namespace {

using Kind = ScenarioStep::Kind;

std::string reported(const char* what, const ScenarioStep& step, std::uint32_t serial)
{
    return std::string(what) + " " + std::to_string(step.report.id) + ", serial number " +
           std::to_string(serial) + (step.name.empty() ? "" : ", as " + step.name);
}

}  // namespace

bool ScenarioRun::run(const AlarmScenario& scenario, bool keepGoing)
{
    serials_.clear();
    done_ = 0;
    failed_ = 0;
    keepGoing_ = keepGoing;
    if (!runAll(scenario.steps(), "")) {
        errors_ << "talvikctl: stopped after " << done_ << " of " << scenario.total()
                << " steps; the others were not tried\n";
        return false;
    }
    if (failed_ != 0) {
        errors_ << "talvikctl: " << failed_ << " of " << scenario.total() << " steps failed\n";
        return false;
    }
    out_ << "done: " << done_ << (done_ == 1 ? " step\n" : " steps\n");
    return true;
}

// NOLINTBEGIN(misc-no-recursion): as deep as repeats stand in each other, which has a bound

/// Returns whether the run goes on. `rounds` says in which rounds of repeats it is.
bool ScenarioRun::runAll(const std::vector<ScenarioStep>& steps, const std::string& rounds)
{
    for (const auto& step : steps) {
        const bool goesOn =
            step.kind == Kind::Repeat ? runRepeat(step, rounds) : tryStep(step, rounds);
        if (!goesOn) {
            return false;
        }
    }
    return true;
}

bool ScenarioRun::runRepeat(const ScenarioStep& step, const std::string& rounds)
{
    for (std::uint32_t round = 1; round <= step.times; ++round) {
        const auto here = rounds + (rounds.empty() ? "round " : ", ") + std::to_string(round) +
                          " of " + std::to_string(step.times);
        if (!runAll(step.steps, here)) {
            return false;
        }
    }
    return true;
}

// NOLINTEND(misc-no-recursion)

bool ScenarioRun::tryStep(const ScenarioStep& step, const std::string& rounds)
{
    const auto where = step.place + (rounds.empty() ? "" : " (" + rounds + ")") + ": ";
    try {
        const auto outcome = carryOut(step);
        out_ << where << printable(outcome) << std::endl;
        ++done_;
        return true;
    } catch (const Failure& failure) {
        errors_ << "talvikctl: " << where << printable(failure.what()) << "; "
                << printable(failure.advice()) << '\n';
        ++failed_;
    }
    return keepGoing_;
}

/// Returns what was done, for people.
std::string ScenarioRun::carryOut(const ScenarioStep& step)
{
    switch (step.kind) {
    case Kind::Raise: {
        const auto serial = target_.raise(step.report);
        if (!step.name.empty()) {
            serials_[step.name] = serial;
        }
        return reported("raised", step, serial);
    }
    case Kind::Event:
        return reported("reported", step, target_.reportEvent(step.report));
    case Kind::Clear: {
        const auto named = serials_.find(step.name);
        if (named == serials_.end()) {  // possible only when the run goes on after a failure
            throw Failure(Failure::Kind::UnknownRow,
                          "cannot clear " + step.name + ": it could not be raised",
                          "see why above");
        }
        const auto serial = named->second;
        serials_.erase(named);
        target_.clear(serial);
        return "cleared " + step.name + ", serial number " + std::to_string(serial);
    }
    case Kind::Pause:
        pause_(std::chrono::milliseconds(step.pauseMs));
        return "paused for " + std::to_string(step.pauseMs) + " ms";
    case Kind::Repeat:
        break;
    }
    return {};
}

}  // namespace talvik::ctl
