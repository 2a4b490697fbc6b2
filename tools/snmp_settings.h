#pragma once

#include <string>

namespace talvik::ctl {

constexpr unsigned kMaxAnswerMs = 600000;
constexpr unsigned kMaxRetries = 20;

/// Which agent a command asks, and as whom. What is empty is taken from snmp.conf.
struct SnmpSettings {
    std::string agent = "udp:127.0.0.1:1161";  ///< in net-snmp's transport syntax
    std::string version;                       ///< 1, 2c or 3
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
