#include "host/reload.h"

#include "host/start_files.h"
#include "host/startup_error.h"

#include <utility>

namespace talvik {

Reload::Reload(const LogSettings& log, const StartFiles& files, Parts parts)
    : log_(log),
      files_(files),
      parts_(std::move(parts))
{
}

void Reload::run()
{
    reopenLog();
    hostLog()->info("SIGHUP: reading again what can be read while the agent runs");
    parts_.agentConfiguration();
    parts_.trapSettings();
    files_.report();
    hostLog()->info("SIGHUP: options of the command line, listening addresses and the state "
                    "directory stay as they are until a restart");
    parts_.done();
    hostLog()->flush();
}

void Reload::reopenLog() const
{
    if (log_.file.empty()) {
        return;
    }
    try {
        configureLog(log_);
        hostLog()->info("SIGHUP: log file {}: opened anew", log_.file);
    } catch (const StartupError& error) {
        hostLog()->error("SIGHUP: {}; lines go on to the file that was open", error.what());
    }
}

}  // namespace talvik
