#pragma once

#include "host/counted_link.h"
#include "host/loop_watcher.h"
#include "host/snmp/agent_health.h"

#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace talvik {

/// Gathers what the agent knows of its own health, and logs it: once at the start, and hourly when
/// anything has changed. Nobody is asked or waited for. On the thread of the agent's loop.
class HealthSource : public LoopWatcher {
public:
    /// What stays as it is while the agent runs.
    struct Facts {
        std::string version;
        std::string moduleFile;
        std::string backendName;
        bool backendEmbedded = true;
    };

    /// Adds to the health what somebody else knows of it.
    using Report = std::function<void(AgentHealth& health)>;

    /// Whether the back end's notifications come.
    struct Subscription {
        std::optional<bool> works;  ///< nothing before the first attempt to have them has ended
        Time since = Time::min();   ///< when they last began to come, if they do
    };

    explicit HealthSource(Facts facts, HealthClock clock = {});

    /// What the link to the back end counts into.
    LinkCounters& link() { return link_; }

    /// Whose health it is. What they know of outlives the last call of `now`.
    void follow(Report report) { reports_.push_back(std::move(report)); }
    void followNotifications(std::function<Subscription()> subscription)
    {
        subscription_ = std::move(subscription);
    }

    void setModuleLoaded(bool loaded) { moduleLoaded_ = loaded; }

    /// Notes that files have been read again.
    void reloaded() { reloaded_ = clock_.date(); }

    AgentHealth now() const;

    /// When the back end last left a command without an answer, while it is that why it counts as
    /// down: nothing but another answer ends it, since its notifications seem to come.
    std::optional<Time> backendSilentSince() const;

    /// Writes the first line, from which on the hours are counted.
    void start();

    int descriptor() const override { return -1; }
    Time deadline() const override { return nextLine_; }
    void proceed(bool ready, Time now) override;

private:
    AgentHealth::Backend backendState(const LinkCounters::Values& link) const;

    const Facts facts_;
    const HealthClock clock_;
    const std::time_t started_;
    std::optional<std::time_t> reloaded_;
    bool moduleLoaded_ = false;
    LinkCounters link_;
    std::vector<Report> reports_;
    std::function<Subscription()> subscription_ = [] { return Subscription(); };
    Time nextLine_ = Time::max();
    std::string lastLine_;
};

/// The counters in one line.
std::string healthLine(const AgentHealth& health);

}  // namespace talvik
