#pragma once

#include "host/link/backend_link.h"

#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace talvik {

/// What the agent's health is told by. Callable from any thread.
struct HealthClock {
    std::function<std::chrono::steady_clock::time_point()> steady = &std::chrono::steady_clock::now;
    std::function<std::time_t()> date = [] { return std::time(nullptr); };
};

/// What came of the exchanges with the back end since the start. Callable from any thread.
class LinkCounters {
public:
    using Time = std::chrono::steady_clock::time_point;

    struct Values {
        std::uint64_t exchanges = 0;
        std::uint64_t failures = 0;           ///< without an answer that makes sense
        std::optional<std::time_t> answered;  ///< the latest answer
        std::optional<bool> works;  ///< the latest exchange, or an answer noted since; nothing
                                    ///< before the first
        Time failed = Time::min();  ///< the latest failure
    };

    explicit LinkCounters(HealthClock clock = {});

    void add(bool works);

    /// It answered something that is no command of anybody's: it works, and nothing is counted.
    void noteAnswer();

    Values values() const;

private:
    const HealthClock clock_;
    mutable std::mutex mutex_;
    Values values_;  // under mutex_
};

/// Counts what goes through another link. A refusal by the back end is an answer like any other.
class CountedLink : public BackendLink {
public:
    /// `counters` outlives it.
    CountedLink(std::unique_ptr<BackendLink> link, LinkCounters& counters);

    int exchange(Package& request, Package& answer) override;
    std::string name() const override { return link_->name(); }

private:
    const std::unique_ptr<BackendLink> link_;
    LinkCounters& counters_;
};

}  // namespace talvik
