#include "host/agent_options.h"
#include "host/agent_program.h"
#include "host/platform/ace_log_route.h"
#include "host/platform/debug_kits.h"
#include "host/platform/host_log.h"
#include "host/startup_error.h"
#include "host/stop_signals.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    talvik::AgentOptions options;
    if (const auto exitCode = talvik::parseCommandLine(argc, argv, options)) {
        return *exitCode;
    }
    try {
        const talvik::StopSignals signals;
        talvik::configureLog(options.log);
        talvik::routeAceLog();
        talvik::makeDebugKits();
        if (options.checkOnly) {
            talvik::checkAgent(options);
            std::cout << "OK\n";
        } else {
            talvik::runAgent(options, signals);
            talvik::hostLog()->info("ended");
        }
        return talvik::kExitOk;
    } catch (const talvik::StartupError& error) {
        talvik::hostLog()->error("talvik-agentd cannot start: {}", error.what());
    } catch (const std::exception& error) {
        talvik::hostLog()->error("talvik-agentd failed: {}", error.what());
    }
    return talvik::kExitCannotStart;
}
