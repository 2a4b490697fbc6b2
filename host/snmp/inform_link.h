#pragma once

#include "host/snmp/engine_discovery.h"
#include "host/snmp/inform_session.h"
#include "host/snmp/usm_users.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace talvik {

/// The way of informs to one receiver: finds out its engine ID if it is one of version 3, again
/// whenever that changes, and keeps a session open. Nothing here waits.
class InformLink {
public:
    using Time = std::chrono::steady_clock::time_point;

    enum class Way {
        Open,     ///< `session` can be used
        Waiting,  ///< for the engine ID; `problem` is untouched
        None,     ///< `problem` says why not
    };

    /// `workDue` is called when an answer came and `proceed` has something to do.
    InformLink(UsmUsers& users, std::function<void()> workDue)
        : users_(users),
          workDue_(std::move(workDue))
    {
    }

    /// Opens the way by `settings`, whose engine ID is not looked at. They are the same until
    /// `close`.
    Way open(const SessionSettings& settings, Time now, std::string& problem);

    /// Null if there is none.
    InformSession* session() const { return session_.get(); }

    std::size_t underWay() const { return session_ == nullptr ? 0 : session_->underWay(); }

    /// Ends what is under way as `InformEnd::Closed`. The engine ID stays known.
    void close() { session_.reset(); }

    /// The receiver is somewhere else, or its engine is another one: the next `open` asks at once.
    void forgetEngine();

    /// Takes the outcome of a discovery; false if nobody answered it.
    bool proceed(Time now);

private:
    Way findEngine(const SessionSettings& settings, Time now, std::string& problem);

    UsmUsers& users_;
    std::function<void()> workDue_;
    std::string engineId_;
    UsmUsers::EngineUser user_;           ///< of that engine
    std::chrono::milliseconds pause_{0};  ///< between two discoveries
    Time discoverAt_ = Time::min();
    std::unique_ptr<EngineDiscovery> discovery_;
    std::unique_ptr<InformSession> session_;
};

}  // namespace talvik
