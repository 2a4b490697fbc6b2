#pragma once

#include "host/agent_options.h"
#include "host/served_module.h"

#include <functional>
#include <list>
#include <optional>
#include <string>

namespace talvik {

/// The module ready to be served; nothing where it cannot be used and the agent is to go on all the
/// same.
class ChosenModule {
public:
    /// `options` outlive it. Throws `StartupError`, as `serve` does.
    explicit ChosenModule(const AgentOptions& options);

    /// As `ServedModule::serve`.
    void serve(SnmpAgent& agent, TableKeeper& keeper, BatchTable::Limits limits);

    bool isThere() const { return served_.has_value(); }

    /// Null without a module.
    const MibDescription* mib() const { return served_ ? &served_->mib() : nullptr; }

    /// What was loaded, or was to be.
    std::list<std::string> files() const;

private:
    void unlessUnusable(const std::function<void()>& step);

    const AgentOptions& options_;
    std::optional<ServedModule> served_;
};

}  // namespace talvik
