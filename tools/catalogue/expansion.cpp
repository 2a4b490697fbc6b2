#include "tools/catalogue/expansion.h"

#include "alarmconfig/alarm_config_parser.h"
#include "framework/kel_exception.h"
#include "host/platform/device_config_file.h"
#include "host/platform/installation_root.h"
#include "host/startup_error.h"
#include "tools/catalogue/ordinary_file.h"

#include <filesystem>

namespace talvik::ctl {

namespace {

/// The module opens root + "/" + path: `path` as it is to stand behind an empty root.
std::string behindRoot(const std::string& path)
{
    return std::filesystem::absolute(path).relative_path().string();
}

/// Lets the platform's operations answer with these files.
void installFiles(const std::string& definitions, const std::string& enumerations)
{
    DeviceConfigFile device;
    // The host wants to know what device it is; no text shows it.
    device.set("BASIC_INFO", "NODE_CODE", "");
    device.set("BASIC_INFO", "NODE_TYPE", "0");
    device.set("BASIC_INFO", "DEVICE_TYPE", "0");
    device.set("BASIC_INFO", "PRODUCT_SN", "");
    device.set("SNMP_CONF", "ALARM_INI_PATH", behindRoot(definitions));
    device.set("SNMP_CONF", "ALARM_PARAM_ENUM_PATH", behindRoot(enumerations));
    installDeviceConfig(std::move(device));
    installInstallationRoot("");
}

/// The module's parser, loaded for one use.
class LoadedParser {
public:
    LoadedParser() : parser_(CAlarmConfigParser::instance()) {}
    ~LoadedParser() { CAlarmConfigParser::destroy(); }

    LoadedParser(const LoadedParser&) = delete;
    LoadedParser& operator=(const LoadedParser&) = delete;

    CAlarmConfigParser* operator->() const { return parser_; }

private:
    CAlarmConfigParser* parser_;
};

void fill(Expansion& expansion, const std::string& params)
{
    const LoadedParser parser;
    u_int shownId = 0;
    expansion.shown =
        parser->getAlarmInfo(expansion.id, params, expansion.location, expansion.detail, shownId,
                             expansion.name, expansion.suggestion) == 0;
    expansion.shownId = shownId;
}

}  // namespace

Expansion expandAlarm(const std::string& definitions, const std::string& enumerations,
                      std::uint64_t id, const std::string& params)
{
    requireOrdinaryFile(definitions);
    requireOrdinaryFile(enumerations);
    installFiles(definitions, enumerations);
    ModuleLog log;
    Expansion expansion;
    expansion.id = id;
    try {
        fill(expansion, params);
    } catch (const CKEL_Exception& error) {
        throw StartupError("the module cannot load " + definitions + " and " + enumerations + ": " +
                           error.what() + " Find out why with talvikctl catalogue check " +
                           definitions + " --enums " + enumerations);
    }
    expansion.log = log.take();
    if (!expansion.shown) {
        expansion.location.clear();
        expansion.detail.clear();
    }
    return expansion;
}

}  // namespace talvik::ctl
