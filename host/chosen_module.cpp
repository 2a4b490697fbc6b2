#include "host/chosen_module.h"

#include "host/platform/host_log.h"
#include "host/startup_error.h"

namespace talvik {

ChosenModule::ChosenModule(const AgentOptions& options) : options_(options)
{
    unlessUnusable([this] { served_.emplace(options_.moduleFile, options_.mibDir); });
}

void ChosenModule::serve(SnmpAgent& agent, TableKeeper& keeper, BatchTable::Limits limits)
{
    if (served_) {
        unlessUnusable([&] { served_->serve(agent, keeper, limits); });
    }
}

std::list<std::string> ChosenModule::files() const
{
    return served_ ? served_->files() : std::list<std::string>{options_.moduleFile};
}

void ChosenModule::unlessUnusable(const std::function<void()>& step)
{
    try {
        step();
    } catch (const StartupError& error) {
        served_.reset();
        // A check is there to find what is wrong.
        if (!options_.continueWithoutModule() || options_.checkOnly) {
            throw;
        }
        hostLog()->error("talvik-agentd goes on without the module: {}; its subtrees are not "
                         "served and alarms are not reported until that is put right and the "
                         "agent is started again",
                         error.what());
    }
}

}  // namespace talvik
