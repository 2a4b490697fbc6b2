#include "host/snmp/agent.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/snmp/agentx_offer.h"
#include "host/snmp/bulk_response_limit.h"
#include "host/snmp/callback_guard.h"
#include "host/snmp/durable_file.h"
#include "host/snmp/event_loop.h"
#include "host/snmp/health_subtree.h"
#include "host/snmp/net_snmp.h"
#include "host/snmp/net_snmp_persistence.h"
#include "host/snmp/tcp_wrappers.h"
#include "host/startup_error.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <utility>

// Exported by the library, declared in none of its headers.
extern "C" {
void init_vacm_conf(void);
void init_usmConf(void);
}

namespace talvik {

namespace {

constexpr const char* kDefaultListen = "udp:127.0.0.1:1161";

/// The only parts of the standard MIBs that are served; the library would start all that it was
/// built with.
constexpr const char* kLibraryModules =
    "system_mib,sysORTable,snmp_mib,setSerialNo,vacm_vars,vacm_conf,vacm_context,snmpEngine,"
    "snmpMPDStats,usmStats,usmUser,usmConf";

/// Words about the system group, which is the master's then.
constexpr std::array<const char*, 6> kMastersWords = {"sysDescr", "sysObjectID", "sysContact",
                                                      "sysName",  "sysLocation", "sysServices"};

constexpr int kMaxGetBulkResponses =
    1000;  ///< more than 100 repeaters get an empty answer otherwise

/// The library looks at the environment; whatever is set there is not for this agent.
void shieldFromEnvironment(const std::string& persistentDir)
{
    setenv("SNMPCONFPATH", persistentDir.c_str(), 1);
    setenv("MIBS", "", 1);
    setenv("MIBDIRS", persistentDir.c_str(), 1);
    unsetenv("SNMP_PERSISTENT_DIR");
    unsetenv("SNMP_PERSISTENT_FILE");
}

void setDefaults(const std::string& persistentDir, const std::string& configFile)
{
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_PERSISTENT_DIR,
                          persistentDir.c_str());
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OPTIONALCONFIG, configFile.c_str());
    netsnmp_ds_set_int(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_MAX_GETBULKRESPONSES,
                       kMaxGetBulkResponses);
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID,
                           NETSNMP_DS_AGENT_DONT_LOG_TCPWRAPPERS_CONNECTS, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_NO_ROOT_ACCESS, 1);
}

/// The library splits the option at commas and passes over a file that it cannot read.
std::string checkedConfigFile(const std::string& path)
{
    const auto absolute = std::filesystem::absolute(path).string();
    if (!readFile(absolute)) {
        throw StartupError("agent configuration " + absolute + ": no such file");
    }
    if (absolute.find(',') != std::string::npos) {
        throw StartupError("agent configuration " + absolute +
                           ": a path with a comma cannot be used, move the file");
    }
    return absolute;
}

std::string join(const std::vector<std::string>& parts, const char* separator)
{
    std::string text;
    for (const auto& part : parts) {
        text += (text.empty() ? "" : separator) + part;
    }
    return text;
}

/// The texts of `lines` that have `level` and begin with `start`, each once: the library reads its
/// files twice.
std::vector<std::string> textsOf(const std::vector<LibraryLog::Line>& lines,
                                 LibraryLog::Level level, const std::string& start = "")
{
    std::vector<std::string> texts;
    for (const auto& line : lines) {
        if (line.level == level && line.text.compare(0, start.size(), start) == 0 &&
            std::find(texts.begin(), texts.end(), line.text) == texts.end()) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

/// The library's own advice on this names files that this agent does not read.
bool saysNobodyHasAccess(const std::vector<LibraryLog::Line>& lines)
{
    return !textsOf(lines, LibraryLog::Level::Warning, "Warning: no access control information")
                .empty();
}

void initLibrary()
{
    auto* modules = strdup(kLibraryModules);  // the library cuts it up
    add_to_init_list(modules);
    free(modules);
    if (init_agent(kApplicationName) != 0) {
        throw StartupError("net-snmp's agent library cannot be set up");
    }
}

/// What the same configuration file needs under an AgentX master, whose all the rest is.
void initSubagentModules()
{
    init_vacm_conf();
    init_usmConf();
    for (const auto* word : kMastersWords) {
        register_app_config_handler(
            word, [](const char*, char*) {}, nullptr, nullptr);
    }
}

void checkEngine(const EngineState& engine, const std::string& configFile)
{
    unsigned char id[SNMP_MAX_ENG_SIZE];
    const auto length = snmpv3_get_engineID(id, sizeof(id));
    if (std::string(id, id + length) != engine.id) {
        throw StartupError("agent configuration " + configFile +
                           ": remove engineID, exactEngineID and engineIDType: the agent keeps its "
                           "engine ID in its state directory");
    }
    if (snmpv3_local_snmpEngineBoots() != engine.boots) {
        throw StartupError(
            "agent configuration " + configFile +
            ": remove engineBoots and oldEngineID: the agent counts its boots itself");
    }
}

/// What the library would do at its words but this agent does not support.
void checkUnsupported(const AgentSettings& settings)
{
    const auto* directory =
        netsnmp_ds_get_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_PERSISTENT_DIR);
    if (directory == nullptr || settings.persistentDir != directory) {
        // The library writes there when it is shut down.
        netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_PERSISTENT_DIR,
                              settings.persistentDir.c_str());
        throw StartupError("agent configuration " + settings.configFile +
                           ": remove persistentDir: the agent keeps everything in its state "
                           "directory");
    }
    if (netsnmp_ds_get_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_AGENTX_MASTER) != 0) {
        throw StartupError("agent configuration " + settings.configFile +
                           ": remove \"master agentx\": this agent takes no subagents");
    }
    if (settings.master &&
        netsnmp_ds_get_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_X_SOCKET) != nullptr) {
        throw StartupError("agent configuration " + settings.configFile +
                           ": remove agentXSocket: --agentx ADDR names the master");
    }
}

}  // namespace

SnmpAgent::SnmpAgent(AgentSettings settings) : settings_(std::move(settings))
{
    settings_.configFile = checkedConfigFile(settings_.configFile);
    shieldFromEnvironment(settings_.persistentDir);
    setDefaults(settings_.persistentDir, settings_.configFile);

    if (settings_.master) {
        AgentxMaster::enterRole();
    }
    initLibrary();
    if (settings_.master) {
        master_ = std::make_unique<AgentxMaster>(*settings_.master, log_);
        initSubagentModules();
    } else {
        init_mib_modules();
    }
    limitBulkResponses();
    rememberAdmittedManagers();
    bridge_ = std::make_unique<RequestBridge>();
    healthBridge_ = std::make_unique<RequestBridge>();
}

SnmpAgent::~SnmpAgent()
{
    if (master_) {
        stopWithdrawing();
    }
    healthBridge_.reset();
    bridge_.reset();
    if (configured_) {
        snmp_shutdown(kApplicationName);
    }
    shutdown_master_agent();
    shutdown_agent();
}

void SnmpAgent::serveHealth(std::function<AgentHealth()> source)
{
    healthBridge_->serve(std::make_unique<HealthSubtree>(std::move(source)));
}

AgentHealth::Master SnmpAgent::masterState() const
{
    if (!master_) {
        return AgentHealth::Master::None;
    }
    return master_->isServing() ? AgentHealth::Master::Connected : AgentHealth::Master::Away;
}

std::vector<std::string> SnmpAgent::configure()
{
    const auto& id = settings_.engine.id;
    set_exact_engineID(reinterpret_cast<const unsigned char*>(id.data()), id.size());
    storeForLibrary(settings_.persistentDir, settings_.engine);
    log_.startKeeping();
    init_snmp(kApplicationName);
    configured_ = true;
    const auto lines = log_.stopKeeping();
    checkUnsupported(settings_);
    const auto errors = textsOf(lines, LibraryLog::Level::Error);
    if (!errors.empty()) {
        throw StartupError("agent configuration " + settings_.configFile +
                           " is wrong: " + join(errors, "; "));
    }
    checkEngine(settings_.engine, settings_.configFile);
    if (!settings_.master && saysNobodyHasAccess(lines)) {
        hostLog()->warn("agent configuration {} gives access to nobody: every request will be "
                        "refused; add rouser or "
                        "rocommunity lines",
                        settings_.configFile);
    }
    const auto warnings = textsOf(lines, LibraryLog::Level::Warning, settings_.configFile);
    for (const auto& warning : warnings) {
        hostLog()->warn("{}", oneLine(warning));
    }
    reload_ = std::make_unique<ConfigurationReload>(
        ConfigurationReload::Files{settings_.configFile, settings_.persistentDir},
        settings_.master.has_value(), log_);
    return warnings;
}

std::string SnmpAgent::listen()
{
    std::string where;
    if (master_) {
        master_->begin();
        where = "looking for the AgentX master " + master_->name();
    } else {
        where = "listening on " + openEndpoints();
    }
    markPersistentFileComplete();
    snmp_store(kApplicationName);
    return where;
}

std::string SnmpAgent::openEndpoints()
{
    const auto* configured =
        netsnmp_ds_get_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_PORTS);
    std::string endpoints = configured == nullptr ? kDefaultListen : configured;
    if (!settings_.listen.empty()) {
        endpoints = join(settings_.listen, ",");
    }
    netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_PORTS, endpoints.c_str());

    log_.startKeeping();
    const int result = init_master_agent();
    const auto errors = textsOf(log_.stopKeeping(), LibraryLog::Level::Error);
    if (result != 0) {
        throw StartupError("cannot listen on " + endpoints + ": " + join(errors, "; ") +
                           " (is another agent running there?)");
    }
    return endpoints;
}

void SnmpAgent::run(int stopFd, const std::vector<LoopWatcher*>& watchers)
{
    auto all = watchers;
    if (master_) {
        all.push_back(master_.get());
    }
    serveUntilReadable(stopFd, all);
}

}  // namespace talvik
