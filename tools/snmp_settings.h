#pragma once

#include <string>

namespace talvik {
class InstallationPaths;
}

namespace talvik::ctl {

constexpr unsigned kMaxAnswerMs = 600000;
constexpr unsigned kMaxRetries = 20;

/// Where the agent of an installation listens unless it is configured otherwise: that of the system
/// has SNMP's own port (the packages configure it so), any other one a port that needs no
/// privilege.
std::string usualAgent(const InstallationPaths& paths);

/// The same for the installation that this program belongs to.
std::string usualAgent();

/// Which agent a command asks, and as whom. What is empty is taken from snmp.conf.
struct SnmpSettings {
    std::string agent = usualAgent();  ///< in net-snmp's transport syntax
    std::string version;               ///< 1, 2c or 3
    std::string community;
    std::string user;
    std::string level;  ///< noAuthNoPriv, authNoPriv or authPriv
    std::string authProtocol;
    std::string privProtocol;
    std::string credentialsFile;  ///< read like snmp.conf and after it
    unsigned timeoutMs = 3000;    ///< of each try
    unsigned retries = 1;
};

}  // namespace talvik::ctl
