#include "tools/scenario_run.h"

#include "tools/exit_status.h"

namespace talvik::ctl {

ScenarioCounts ScenarioRun::run(const AlarmScenario& scenario, bool keepGoing)
{
    serials_.clear();
    counts_ = ScenarioCounts();
    counts_.total = scenario.total();
    keepGoing_ = keepGoing;
    counts_.stopped = !runAll(scenario.steps(), "");
    report_.ended(counts_);
    return counts_;
}

// NOLINTBEGIN(misc-no-recursion): as deep as repeats stand in each other, which has a bound

/// Returns whether the run goes on. `rounds` says in which rounds of repeats it is.
bool ScenarioRun::runAll(const std::vector<ScenarioStep>& steps, const std::string& rounds)
{
    for (const auto& step : steps) {
        const bool goesOn = step.kind == ScenarioStep::Kind::Repeat ? runRepeat(step, rounds)
                                                                    : tryStep(step, rounds);
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
    const ScenarioMoment moment{step, rounds, counts_.done + counts_.failed + 1};
    report_.begins(moment, counts_);
    try {
        report_.succeeded(moment, carryOut(step));
        ++counts_.done;
        return true;
    } catch (const Failure& failure) {
        report_.failed(moment, failure);
        counts_.unanswered = counts_.unanswered || isForWantOfAnAnswer(failure.kind());
        ++counts_.failed;
    }
    return keepGoing_;
}

/// Returns the serial number, or 0 if the step has none.
std::uint32_t ScenarioRun::carryOut(const ScenarioStep& step)
{
    switch (step.kind) {
    case ScenarioStep::Kind::Raise: {
        const auto serial = target_.raise(step.report);
        if (!step.name.empty()) {
            serials_[step.name] = serial;
        }
        return serial;
    }
    case ScenarioStep::Kind::Event:
        return target_.reportEvent(step.report);
    case ScenarioStep::Kind::Clear:
        return clear(step.name);
    case ScenarioStep::Kind::Pause:
        pause_(std::chrono::milliseconds(step.pauseMs));
        break;
    case ScenarioStep::Kind::Repeat:
        break;
    }
    return 0;
}

std::uint32_t ScenarioRun::clear(const std::string& name)
{
    const auto named = serials_.find(name);
    if (named == serials_.end()) {  // possible only when the run goes on after a failure
        throw Failure(Failure::Kind::UnknownRow,
                      "cannot clear " + name + ": it could not be raised", "see why above");
    }
    const auto serial = named->second;
    serials_.erase(named);
    target_.clear(serial);
    return serial;
}

}  // namespace talvik::ctl
