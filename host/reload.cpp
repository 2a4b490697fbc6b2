#include "host/reload.h"

#include "host/health_source.h"
#include "host/notification_service.h"
#include "host/platform/host_log.h"
#include "host/snmp/agent.h"
#include "host/start_files.h"
#include "host/startup_error.h"

namespace talvik {

Reload::Reload(const AgentOptions& options, const StartFiles& files, Parts parts)
    : options_(options),
      files_(files),
      parts_(parts)
{
}

void Reload::run()
{
    reopenLog();
    hostLog()->info("SIGHUP: reading again what can be read while the agent runs");
    parts_.agent.reloadConfiguration();
    parts_.notifications.readSettingsAgain();
    files_.report();
    hostLog()->info("SIGHUP: options of the command line, listening addresses and the state "
                    "directory stay as they are until a restart");
    parts_.health.reloaded();
    hostLog()->flush();
}

void Reload::reopenLog() const
{
    if (options_.log.file.empty()) {
        return;
    }
    try {
        configureLog(options_.log);
        hostLog()->info("SIGHUP: log file {}: opened anew", options_.log.file);
    } catch (const StartupError& error) {
        hostLog()->error("SIGHUP: {}; lines go on to the file that was open", error.what());
    }
}

}  // namespace talvik
