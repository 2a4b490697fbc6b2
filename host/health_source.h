#pragma once

#include "host/counted_link.h"
#include "host/loop_watcher.h"
#include "host/snmp/agent_health.h"

#include <ctime>
#include <optional>
#include <string>

namespace talvik {

class NotificationService;
class SnmpAgent;

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

    explicit HealthSource(Facts facts);

    /// What the link to the back end counts into.
    LinkCounters& link() { return link_; }

    /// Whose health it is. Each outlives the last call of `now`.
    void follow(const SnmpAgent& agent) { agent_ = &agent; }
    void follow(const NotificationService& notifications) { notifications_ = &notifications; }

    void setModuleLoaded(bool loaded) { moduleLoaded_ = loaded; }

    /// Notes that files have been read again.
    void reloaded() { reloaded_ = std::time(nullptr); }

    AgentHealth now() const;

    /// Writes the first line, from which on the hours are counted.
    void start();

    int descriptor() const override { return -1; }
    Time deadline() const override { return nextLine_; }
    void proceed(bool ready, Time now) override;

private:
    AgentHealth::Backend backendState(const LinkCounters::Values& link) const;

    const Facts facts_;
    const std::time_t started_;
    std::optional<std::time_t> reloaded_;
    bool moduleLoaded_ = false;
    LinkCounters link_;
    const SnmpAgent* agent_ = nullptr;
    const NotificationService* notifications_ = nullptr;
    Time nextLine_ = Time::max();
    std::string lastLine_;
};

/// The counters in one line.
std::string healthLine(const AgentHealth& health);

}  // namespace talvik
