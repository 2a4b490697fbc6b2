#include "host/snmp/inform_link.h"

#include <algorithm>

namespace talvik {

namespace {

constexpr auto kFirstPause = std::chrono::milliseconds(1000);

// Shorter than notifications wait for a way: each of them sees an attempt.
constexpr auto kLongestPause = std::chrono::milliseconds(5000);

}  // namespace

InformLink::Way InformLink::open(const SessionSettings& settings, Time now, std::string& problem)
{
    if (session_) {
        return Way::Open;
    }
    auto complete = settings;
    if (settings.version3) {
        const auto way = findEngine(settings, now, problem);
        if (way != Way::Open) {
            return way;
        }
        user_ = users_.hold(settings.user, engineId_, problem);
        if (!user_) {
            return Way::None;
        }
        complete.engineId = engineId_;
    }
    session_ = InformSession::open(complete, problem);
    return session_ ? Way::Open : Way::None;
}

/// Nobody is asked for an engine ID on behalf of a user that is not known.
InformLink::Way InformLink::findEngine(const SessionSettings& settings, Time now,
                                       std::string& problem)
{
    if (!users_.makeReady(settings.user, UsmUsers::ownEngineId(), problem)) {
        return Way::None;
    }
    if (!engineId_.empty()) {
        return Way::Open;
    }
    if (!discovery_ && now >= discoverAt_) {
        discovery_ = EngineDiscovery::start(settings, workDue_, problem);
        return discovery_ ? Way::Waiting : Way::None;
    }
    return Way::Waiting;
}

void InformLink::forgetEngine()
{
    close();
    discovery_.reset();
    user_.reset();
    engineId_.clear();
    pause_ = std::chrono::milliseconds(0);
    discoverAt_ = Time::min();
}

bool InformLink::proceed(Time now)
{
    if (!discovery_ || discovery_->running()) {
        return true;
    }
    engineId_ = discovery_->engineId();
    discovery_.reset();
    if (engineId_.empty()) {
        pause_ = std::clamp(2 * pause_, kFirstPause, kLongestPause);
        discoverAt_ = now + pause_;
        return false;
    }
    pause_ = std::chrono::milliseconds(0);
    return true;
}

}  // namespace talvik
