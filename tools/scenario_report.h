#pragma once

#include "tools/alarm_scenario.h"
#include "tools/failure.h"
#include "tools/text_table.h"

#include <cstdint>
#include <ostream>
#include <string>

namespace talvik::ctl {

/// A step at the time when it is done.
struct ScenarioMoment {
    const ScenarioStep& step;
    std::string rounds;  ///< of the repeats that it is in: "round 2 of 3"; empty outside of all
    std::uint64_t number = 0;  ///< from 1
};

/// How far a run came.
struct ScenarioCounts {
    std::uint64_t total = 0;
    std::uint64_t done = 0;
    std::uint64_t failed = 0;
    bool stopped = false;     ///< at the first failure
    bool unanswered = false;  ///< a step failed for want of an answer
};

/// Who is told of a run.
class ScenarioReport {
public:
    virtual ~ScenarioReport() = default;

    virtual void begins(const ScenarioMoment& moment, const ScenarioCounts& counts) = 0;
    /// `serial` is that of the alarm or event, 0 for a pause.
    virtual void succeeded(const ScenarioMoment& moment, std::uint32_t serial) = 0;
    virtual void failed(const ScenarioMoment& moment, const Failure& failure) = 0;
    virtual void ended(const ScenarioCounts& counts) = 0;

protected:
    ScenarioReport() = default;
    ScenarioReport(const ScenarioReport&) = default;
    ScenarioReport& operator=(const ScenarioReport&) = default;
};

/// Lines for people: what goes well to `out`, what does not to `errors`.
class ScenarioText : public ScenarioReport {
public:
    ScenarioText(std::ostream& out, std::ostream& errors, const TableStyle& style = {})
        : out_(out),
          errors_(errors),
          style_(style)
    {
    }

    void begins(const ScenarioMoment& moment, const ScenarioCounts& counts) override;
    void succeeded(const ScenarioMoment& moment, std::uint32_t serial) override;
    void failed(const ScenarioMoment& moment, const Failure& failure) override;
    void ended(const ScenarioCounts& counts) override;

private:
    std::ostream& out_;
    std::ostream& errors_;
    TableStyle style_;
};

/// A JSON object a line: one a step and one at the end.
/// {"step", "round", "did": "raise", "event", "clear" or "pause", "id", "serial", "as", "pauseMs"},
/// of which those are there that the step has; a failed one has "failed" in place of "did", and
/// "reason" and "advice". Last {"total", "done", "failed", "stopped"}.
class ScenarioJson : public ScenarioReport {
public:
    explicit ScenarioJson(std::ostream& out) : out_(out) {}

    void begins(const ScenarioMoment& moment, const ScenarioCounts& counts) override;
    void succeeded(const ScenarioMoment& moment, std::uint32_t serial) override;
    void failed(const ScenarioMoment& moment, const Failure& failure) override;
    void ended(const ScenarioCounts& counts) override;

private:
    std::ostream& out_;
};

}  // namespace talvik::ctl
