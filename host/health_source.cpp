#include "host/health_source.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"

#include <fmt/format.h>

#include <utility>

namespace talvik {

namespace {

using Backend = AgentHealth::Backend;

constexpr std::chrono::hours kBetweenLines{1};

const char* textOf(Backend state)
{
    switch (state) {
    case Backend::Embedded:
        return "embedded";
    case Backend::Up:
        return "up";
    case Backend::Down:
        return "down";
    case Backend::Unknown:
        break;
    }
    return "unknown";
}

}  // namespace

HealthSource::HealthSource(Facts facts, HealthClock clock)
    : facts_(std::move(facts)),
      clock_(std::move(clock)),
      started_(clock_.date()),
      link_(clock_)
{
}

Backend HealthSource::backendState(const LinkCounters::Values& link) const
{
    if (facts_.backendEmbedded) {
        return Backend::Embedded;
    }
    const auto subscription = subscription_();
    if (!subscription.works) {  // not known yet, or not wanted for want of a module
        if (!link.works) {
            return Backend::Unknown;
        }
        return *link.works ? Backend::Up : Backend::Down;
    }
    const bool answers = link.works.value_or(true) || subscription.since > link.failed;
    return *subscription.works && answers ? Backend::Up : Backend::Down;
}

std::optional<HealthSource::Time> HealthSource::backendSilentSince() const
{
    const auto link = link_.values();
    const bool subscriptionFails = !subscription_().works.value_or(true);
    if (subscriptionFails || backendState(link) != Backend::Down) {
        return std::nullopt;
    }
    return link.failed;
}

AgentHealth HealthSource::now() const
{
    const auto link = link_.values();
    AgentHealth health;
    health.version = facts_.version;
    health.started = started_;
    health.reloaded = reloaded_;
    health.moduleFile = facts_.moduleFile;
    health.module = moduleLoaded_ ? AgentHealth::Module::Loaded : AgentHealth::Module::Missing;
    health.backendName = facts_.backendName;
    health.backend = backendState(link);
    health.backendAnswered = link.answered;
    health.backendCommands = link.exchanges;
    health.backendFailures = link.failures;
    for (const auto& report : reports_) {
        report(health);
    }
    return health;
}

void HealthSource::start()
{
    const auto health = now();
    hostLog()->info("talvik-agentd {}, module {} {}, back end {}, objects: {}, trap receivers: {}",
                    health.version, oneLine(health.moduleFile),
                    moduleLoaded_ ? "loaded" : "missing", oneLine(health.backendName),
                    health.objects.size(), health.receivers);
    lastLine_ = healthLine(health);
    nextLine_ = clock_.steady() + kBetweenLines;
}

void HealthSource::proceed(bool /*ready*/, Time now)
{
    nextLine_ = now + kBetweenLines;
    auto line = healthLine(this->now());
    if (line != lastLine_) {
        hostLog()->info("health: {}", line);
        lastLine_ = std::move(line);
    }
}

std::string healthLine(const AgentHealth& health)
{
    const auto total = totalOf(health.objects);
    return fmt::format("requests {}, of these sets {}, errors {}; back end {}, commands {}, "
                       "failures {}; notifications taken {}; traps sent {}, failed {}, informs "
                       "answered {}, given up {}, waiting {}",
                       total.requests, total.sets, total.errors, textOf(health.backend),
                       health.backendCommands, health.backendFailures, health.notificationsTaken,
                       health.traps.sent, health.traps.failed, health.traps.answered,
                       health.traps.givenUp, health.traps.waiting);
}

}  // namespace talvik
