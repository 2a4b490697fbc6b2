#include "host/sdk/reference_platform.h"

#include "host/link/backend_choice.h"
#include "host/link/configuration_link.h"
#include "host/platform/ace_log_route.h"
#include "host/platform/debug_kits.h"
#include "host/platform/device_config_file.h"
#include "host/platform/host_log.h"
#include "host/platform/installation_root.h"
#include "host/platform/name_cache.h"
#include "host/platform/notification_handlers.h"
#include "host/platform/trap_store.h"

#include <filesystem>
#include <memory>

namespace talvik {

namespace {

void setUpLog(const std::string& level)
{
    LogSettings log;
    log.level = level;
    configureLog(log);
    routeAceLog();
    makeDebugKits();
}

std::unique_ptr<TrapStore> trapStoreIn(const std::string& directory)
{
    if (directory.empty()) {
        return nullptr;
    }
    std::filesystem::create_directories(directory);
    return std::make_unique<TrapStore>(directory);
}

}  // namespace

ReferencePlatform::ReferencePlatform(const Settings& settings)
{
    setUpLog(settings.logLevel);
    const auto device = DeviceConfigFile::load(settings.deviceFile);
    auto trapStore = trapStoreIn(settings.stateDirectory);
    installDeviceConfig(device);
    installInstallationRoot(settings.installationRoot);
    installBackendLink(makeBackendLink(BackendChoice(), device));
    installTrapStore(std::move(trapStore));
}

ReferencePlatform::~ReferencePlatform()
{
    installTrapStore(nullptr);
    installBackendLink(nullptr);
    stopNameCache();
}

void ReferencePlatform::dropNotificationHandlers()
{
    talvik::dropNotificationHandlers();
}

}  // namespace talvik
