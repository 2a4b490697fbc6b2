#pragma once

#include "tools/alarm_input.h"

#include <cstdint>
#include <string>
#include <vector>

namespace talvik::ctl {

/// The bounds of a scenario.
constexpr std::uint32_t kMaxPauseMs = 600000;
constexpr std::uint32_t kMaxRepeats = 100000;
constexpr std::uint32_t kMaxDepth = 4;                ///< repeats within repeats
constexpr std::uint64_t kMaxScenarioSteps = 1000000;  ///< all told

/// One thing that a scenario does.
struct ScenarioStep {
    enum class Kind { Raise, Event, Clear, Pause, Repeat };

    Kind kind = Kind::Pause;
    std::string place;                ///< in the file: "steps[4].repeat.steps[0]"
    AlarmReport report;               ///< of Raise and Event
    std::string name;                 ///< the alarm that Raise names, or none, and Clear clears
    std::uint32_t pauseMs = 0;        ///< of Pause
    std::uint32_t times = 0;          ///< of Repeat
    std::vector<ScenarioStep> steps;  ///< of Repeat
};

/// A sequence of alarms, clears, events and pauses. As a file, JSON with no other members:
///
///     scenario ::= {"steps": [step...]}
///     step     ::= {"raise": report} | {"event": report} | {"clear": NAME} | {"pauseMs":
///     0..600000}
///                | {"repeat": {"times": 1..100000, "steps": [step...]}}
///     report   ::= {"id": "DIGITS", "params"?: [TEXT...], "severity"?: NAME | NUMBER,
///                   "time"?: SECONDS, "as"?: NAME}
///
/// "as", of a raise alone, names the alarm for the clear that follows; a name is free again once
/// its alarm is cleared.
class AlarmScenario {
public:
    /// Throws `StartupError` that names the file, the place within it and the reason when the file
    /// cannot be read, is no such JSON, or clears or names what it cannot.
    static AlarmScenario load(const std::string& path);

    const std::vector<ScenarioStep>& steps() const { return steps_; }

    /// How many steps are done in all; a repeat counts as what it repeats.
    std::uint64_t total() const { return total_; }

private:
    std::vector<ScenarioStep> steps_;
    std::uint64_t total_ = 0;
};

}  // namespace talvik::ctl
