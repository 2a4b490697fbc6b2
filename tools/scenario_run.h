#pragma once

#include "tools/alarm_scenario.h"
#include "tools/alarm_target.h"
#include "tools/scenario_report.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>

namespace talvik::ctl {

/// Does the steps of a scenario one after the other and tells of each what came of it.
class ScenarioRun {
public:
    using Pause = std::function<void(std::chrono::milliseconds)>;

    /// `target` and `report` must outlive the run.
    ScenarioRun(AlarmTarget& target, Pause pause, ScenarioReport& report)
        : target_(target),
          pause_(std::move(pause)),
          report_(report)
    {
    }

    /// Ends at the first step that fails unless `keepGoing`. Returns how far it came.
    ScenarioCounts run(const AlarmScenario& scenario, bool keepGoing);

private:
    bool runAll(const std::vector<ScenarioStep>& steps, const std::string& rounds);
    bool runRepeat(const ScenarioStep& step, const std::string& rounds);
    bool tryStep(const ScenarioStep& step, const std::string& rounds);
    std::uint32_t carryOut(const ScenarioStep& step);
    std::uint32_t clear(const std::string& name);

    AlarmTarget& target_;
    Pause pause_;
    ScenarioReport& report_;
    std::map<std::string, std::uint32_t> serials_;  // of the named alarms that are not cleared
    ScenarioCounts counts_;
    bool keepGoing_ = false;
};

}  // namespace talvik::ctl
