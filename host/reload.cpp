#include "host/reload.h"

#include "host/health_source.h"
#include "host/installation_paths.h"
#include "host/notification_service.h"
#include "host/platform/device_config_file.h"
#include "host/platform/host_log.h"
#include "host/snmp/agent.h"
#include "host/startup_error.h"

#include <sys/stat.h>

#include <utility>

namespace talvik {

namespace {

/// Another text for another file, or for one that was written since.
std::string stampOf(const std::string& file)
{
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) {
        return "";
    }
    std::string stamp;
    for (const long long part :
         {static_cast<long long>(status.st_ino), static_cast<long long>(status.st_size),
          static_cast<long long>(status.st_mtim.tv_sec),
          static_cast<long long>(status.st_mtim.tv_nsec)}) {
        stamp += std::to_string(part) + ' ';
    }
    return stamp;
}

}  // namespace

Reload::Reload(const AgentOptions& options, const DeviceConfigFile& device,
               std::list<std::string> moduleFiles, Parts parts)
    : options_(options),
      parts_(parts)
{
    auto files = std::move(moduleFiles);
    files.push_back(options.deviceFile);
    for (const auto* item : {"ALARM_INI_PATH", "ALARM_PARAM_ENUM_PATH"}) {
        if (const auto* path = device.find("SNMP_CONF", item)) {
            files.push_back(InstallationPaths::ofThisProgram().installationRoot() + "/" + *path);
        }
    }
    for (const auto& file : files) {
        startFiles_.emplace_back(file, stampOf(file));
    }
}

void Reload::run()
{
    reopenLog();
    hostLog()->info("SIGHUP: reading again what can be read while the agent runs");
    parts_.agent.reloadConfiguration();
    parts_.notifications.readSettingsAgain();
    reportStartFiles();
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

void Reload::reportStartFiles() const
{
    for (const auto& [file, stamp] : startFiles_) {
        if (stampOf(file) == stamp) {
            hostLog()->info("SIGHUP: {}: unchanged", file);
        } else {
            hostLog()->warn("SIGHUP: {}: has changed; it is read at the start only, restart the "
                            "agent to take it over",
                            file);
        }
    }
}

}  // namespace talvik
