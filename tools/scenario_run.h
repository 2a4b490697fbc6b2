#pragma once

#include "tools/alarm_scenario.h"
#include "tools/alarm_target.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <ostream>
#include <string>

namespace talvik::ctl {

/// Does the steps of a scenario one after the other and says of each what came of it.
class ScenarioRun {
public:
    using Pause = std::function<void(std::chrono::milliseconds)>;

    /// What goes well is told to `out`, what does not to `errors`. All must outlive the run.
    ScenarioRun(AlarmTarget& target, Pause pause, std::ostream& out, std::ostream& errors)
        : target_(target),
          pause_(std::move(pause)),
          out_(out),
          errors_(errors)
    {
    }

    /// Returns whether every step succeeded. Ends at the first one that fails unless `keepGoing`.
    bool run(const AlarmScenario& scenario, bool keepGoing);

private:
    bool runAll(const std::vector<ScenarioStep>& steps, const std::string& rounds);
    bool runRepeat(const ScenarioStep& step, const std::string& rounds);
    bool tryStep(const ScenarioStep& step, const std::string& rounds);
    std::string carryOut(const ScenarioStep& step);

    AlarmTarget& target_;
    Pause pause_;
    std::ostream& out_;
    std::ostream& errors_;
    std::map<std::string, std::uint32_t> serials_;  // of the named alarms that are not cleared
    std::uint64_t done_ = 0;
    std::uint64_t failed_ = 0;
    bool keepGoing_ = false;
};

}  // namespace talvik::ctl
