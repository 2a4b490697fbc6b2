#include "host/agent_program.h"

#include "backend/back_end.h"
#include "backend/system_commands.h"
#include "backend/unix_address.h"
#include "host/chosen_module.h"
#include "host/counted_link.h"
#include "host/descriptor_limit.h"
#include "host/health_source.h"
#include "host/installation_paths.h"
#include "host/link/backend_choice.h"
#include "host/link/backend_probe.h"
#include "host/link/configuration_link.h"
#include "host/notification_service.h"
#include "host/platform/device_config_file.h"
#include "host/platform/durable_database.h"
#include "host/platform/host_log.h"
#include "host/platform/installation_root.h"
#include "host/platform/name_cache.h"
#include "host/platform/table_batch.h"
#include "host/platform/trap_store.h"
#include "host/reload.h"
#include "host/snmp/agent.h"
#include "host/snmp/durable_file.h"
#include "host/snmp/net_snmp_persistence.h"
#include "host/snmp/standard_notifications.h"
#include "host/start_files.h"
#include "host/startup_error.h"
#include "host/state_directory.h"
#include "host/stop_signals.h"
#include "host/table_keeper.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <list>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace talvik {

namespace {

/// A directory of its own that is gone at the end.
class TemporaryDirectory {
public:
    TemporaryDirectory()
        : path_((std::filesystem::temp_directory_path() / "talvik-XXXXXX").string())
    {
        if (mkdtemp(path_.data()) == nullptr) {
            throw StartupError("cannot make a temporary directory " + path_);
        }
    }

    ~TemporaryDirectory()
    {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }

    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

/// A link to the back end is installed while this lives.
class InstalledBackend {
public:
    explicit InstalledBackend(std::unique_ptr<BackendLink> link)
    {
        installBackendLink(std::move(link));
    }

    ~InstalledBackend() { installBackendLink(nullptr); }

    InstalledBackend(const InstalledBackend&) = delete;
    InstalledBackend& operator=(const InstalledBackend&) = delete;
};

/// The list of trap destinations is installed while this lives.
class InstalledTrapStore {
public:
    explicit InstalledTrapStore(const std::string& directory)
    {
        auto store = std::make_unique<TrapStore>(directory);
        hostLog()->info("trap destinations: {}", store->all().size());
        store_ = store.get();
        installTrapStore(std::move(store));
    }

    ~InstalledTrapStore()
    {
        installTrapStore(nullptr);
        stopNameCache();
    }

    InstalledTrapStore(const InstalledTrapStore&) = delete;
    InstalledTrapStore& operator=(const InstalledTrapStore&) = delete;

    const TrapStore& store() const { return *store_; }

private:
    const TrapStore* store_ = nullptr;
};

/// The commands that the agent's own socket serves: the back end's, when it is embedded, and the
/// agent's.
class ServedCommands {
public:
    /// An embedded back end keeps its alarms in `alarmFile`.
    ServedCommands(const BackendChoice& choice, const DeviceConfigFile& device,
                   const std::string& alarmFile)
    {
        if (choice.embedded) {
            backEnd_.emplace(device, alarmFile);
        }
    }

    backend::CommandServer& commands() { return backEnd_ ? backEnd_->commands() : own_; }
    backend::BackgroundWork* work() { return backEnd_ ? &*backEnd_ : nullptr; }

private:
    std::optional<backend::BackEnd> backEnd_;
    backend::CommandServer own_;
};

EngineStateStore engineStore(const AgentOptions& options)
{
    const auto directory = persistentDirectory(options.stateDir);
    return {options.stateDir, [directory] { return persistentEngineState(directory); },
            persistentFileIn(directory)};
}

BackendChoice backendOf(const AgentOptions& options)
{
    auto choice = parseBackendName(options.backend);
    choice.timeout = std::chrono::milliseconds(options.backendTimeout);
    return choice;
}

void checkSocket(const AgentOptions& options)
{
    if (!backend::unixAddress(options.socket)) {
        throw StartupError("the socket for talvikctl: " +
                           backend::unixAddressRefusal(options.socket) + " with --socket");
    }
}

/// How long a request goes on asking for rows of tables that are driven in batches; the table
/// engine is told its part of it here.
BatchTable::Limits limitTables(const AgentOptions& options)
{
    BatchTable::Limits limits;
    limits.asking = std::chrono::milliseconds(options.backendTimeout);
    limitTableQueries(limits.asking);
    return limits;
}

/// `persistentDir` exists.
AgentSettings agentSettings(const AgentOptions& options, const std::string& persistentDir,
                            const EngineState& engine)
{
    return {options.configFile, persistentDir, options.listen, engine, options.agentx};
}

void serveUntilStopped(SnmpAgent& agent, const std::vector<LoopWatcher*>& watchers,
                       const StopSignals& signals, Reload& reload)
{
    int signal = 0;
    while (signal != SIGTERM && signal != SIGINT) {
        agent.run(signals.descriptor(), watchers);
        signal = signals.take();
        if (signal == SIGHUP) {
            reload.run();
        }
    }
    hostLog()->info("ending on {}", signal == SIGINT ? "SIGINT" : "SIGTERM");
}

/// `commands` has all its commands; these and `counters` outlive the link.
std::unique_ptr<BackendLink> linkTo(const BackendChoice& choice,
                                    const backend::CommandServer& commands, LinkCounters& counters)
{
    const std::shared_ptr<const backend::CommandServer> notOwned(std::shared_ptr<void>(),
                                                                 &commands);
    return std::make_unique<CountedLink>(makeBackendLink(choice, notOwned), counters);
}

/// Asks a back end of its own that did not answer whether it does again; `health` outlives it.
BackendProbe probeOf(const BackendChoice& choice, const DeviceConfigFile& device,
                     HealthSource& health)
{
    return {choice.socketPath, backend::commandNumber(device, "GET_SYSTEM_WWN"),
            [&health] { return health.backendSilentSince(); },
            [&health] { health.link().noteAnswer(); }};
}

/// Both outlive the last look at `health`.
void follow(HealthSource& health, const SnmpAgent& agent, const NotificationService& notifications)
{
    health.follow([&agent](AgentHealth& now) {
        now.master = agent.masterState();
        now.objects = agent.served();
    });
    health.follow([&notifications](AgentHealth& now) { notifications.report(now); });
    health.followNotifications([&notifications] { return notifications.subscription(); });
}

/// An embedded back end's notifications come through the agent's own socket, so there is one way.
NotificationService::Settings notificationSettings(const AgentOptions& options,
                                                   const BackendChoice& choice,
                                                   const DeviceConfigFile& device,
                                                   const ChosenModule& module, TableKeeper& keeper)
{
    return {device,
            options.socket,
            choice.embedded ? options.socket : choice.socketPath,
            {options.trapSettings, module.mib(), &nameCache()},
            keeper,
            module.isThere()};
}

std::string absolute(const std::string& file)
{
    return std::filesystem::absolute(file).string();
}

/// The module, and the alarm catalogue that the device configuration names.
void addModuleAndCatalogue(StartFiles& files, const AgentOptions& options,
                           const DeviceConfigFile& device)
{
    files.add(absolute(options.moduleFile));
    for (const auto* item : {"ALARM_INI_PATH", "ALARM_PARAM_ENUM_PATH"}) {
        if (const auto* path = device.find("SNMP_CONF", item)) {
            files.add(InstallationPaths::ofThisProgram().installationRoot() + "/" + *path);
        }
    }
}

/// What the agent's behaviour follows from, besides its own program.
std::list<std::string> behaviourFiles(const AgentOptions& options, const ChosenModule& module)
{
    auto files = module.files();
    files.insert(files.end(), {options.configFile, options.deviceFile, options.trapSettings});
    return files;
}

}  // namespace

void runAgent(const AgentOptions& options, const StopSignals& signals)
{
    allowManyDescriptors();
    checkSocket(options);
    StartFiles startFiles;
    startFiles.add(options.deviceFile);
    const auto device = DeviceConfigFile::load(options.deviceFile);
    addModuleAndCatalogue(startFiles, options, device);
    installDeviceConfig(device);
    installInstallationRoot(InstallationPaths::ofThisProgram().installationRoot());
    const StateDirectory state(options.stateDir);
    const auto choice = backendOf(options);
    ServedCommands served(choice, device, backend::alarmFileIn(options.stateDir));
    const InstalledTrapStore trapStore(options.stateDir);
    ChosenModule module(options);
    for (const auto& file : module.files()) {  // its description is named by the module itself
        startFiles.add(absolute(file));
    }
    TableKeeper keeper;

    const auto persistentDir = persistentDirectory(options.stateDir);
    preparePersistentDirectory(persistentDir);
    const auto engine = engineStore(options).begin();
    HealthSource health({TALVIK_VERSION, options.moduleFile, options.backend, choice.embedded});
    SnmpAgent agent(agentSettings(options, persistentDir, engine));
    module.serve(agent, keeper, limitTables(options));
    agent.serveHealth([&health] { return health.now(); });
    agent.configure();
    NotificationService notifications(notificationSettings(options, choice, device, module, keeper),
                                      trapStore.store(), served.commands(), served.work());
    const InstalledBackend backend(linkTo(choice, served.commands(), health.link()));
    follow(health, agent, notifications);
    health.setModuleLoaded(module.isThere());
    const auto where = agent.listen();
    notifications.start(
        configurationMayHaveChanged(options.stateDir, behaviourFiles(options, module)));
    health.start();
    hostLog()->info("SNMP engine ID {}, boots {}", toHex(engine.id), engine.boots);
    hostLog()->info("ready, {}", where);
    hostLog()->flush();
    auto watchers = notifications.watchers();
    watchers.push_back(&health);
    auto probe = probeOf(choice, device, health);
    watchers.push_back(&probe);
    Reload reload(options.log, startFiles,
                  {[&agent] { agent.reloadConfiguration(); },
                   [&notifications] { notifications.readSettingsAgain(); },
                   [&health] { health.reloaded(); }});
    serveUntilStopped(agent, watchers, signals, reload);
}

void checkAgent(const AgentOptions& options)
{
    checkSocket(options);
    const auto device = DeviceConfigFile::load(options.deviceFile);
    installDeviceConfig(device);
    installInstallationRoot(InstallationPaths::ofThisProgram().installationRoot());
    const auto choice = backendOf(options);
    ServedCommands served(choice, device, DurableDatabase::kInMemory);
    ChosenModule module(options);
    TableKeeper keeper;

    const TemporaryDirectory scratch;
    const TrapStore noDestinations(scratch.path());
    SnmpAgent agent(agentSettings(options, scratch.path(), engineStore(options).preview()));
    module.serve(agent, keeper, limitTables(options));
    agent.serveHealth([] { return AgentHealth(); });
    const auto warnings = agent.configure();
    if (!warnings.empty()) {
        throw StartupError("agent configuration " + warnings.front());
    }
    // Made, not started: that is what finds the rest of the faults.
    const NotificationService notifications(
        notificationSettings(options, choice, device, module, keeper), noDestinations,
        served.commands(), served.work());
}

}  // namespace talvik
