#include "tools/snmp_options.h"

#include "tools/command_line.h"
#include "tools/trap_names.h"

#include <CLI/CLI.hpp>

#include <arpa/inet.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>

namespace talvik::ctl {

namespace {

/// `address` without a transport in front whose addresses are host and port; nothing where it is
/// another transport's.
std::optional<std::string> hostAndPort(const std::string& address)
{
    const auto colon = std::min(address.find(':'), address.size());
    const auto first = address.substr(0, colon);
    const auto is = [&first](const auto& names) {
        return std::find(std::begin(names), std::end(names), first) != std::end(names);
    };
    static constexpr const char* kOthers[] = {"unix",     "ssh", "dtlsudp", "dtls", "tlstcp", "tls",
                                              "callback", "std", "alias",   "ipx",  "aal5pvc"};
    static constexpr const char* kOfHosts[] = {"udp", "udp6", "udpv6", "udpipv6",
                                               "tcp", "tcp6", "tcpv6", "tcpipv6"};
    if (address.rfind('/', 0) == 0 || (colon != address.size() && is(kOthers))) {
        return std::nullopt;
    }
    return colon != address.size() && is(kOfHosts) ? address.substr(colon + 1) : address;
}

/// Refuses what cannot be an address, so that nobody can be asked.
std::string refusalOfAgent(const std::string& address)
{
    constexpr std::uint32_t kMaxPort = 65535;
    const std::string example = "; an example is udp:192.0.2.1:1161";
    const auto rest = hostAndPort(address);
    if (!rest) {
        return "";
    }
    const auto colon = rest->rfind(':');
    const bool isIpv6 = rest->find(':') != colon && rest->rfind('[', 0) != 0;
    const bool hasPort = colon != std::string::npos && !isIpv6 && rest->back() != ']';
    const auto port = hasPort ? plainNumber(rest->substr(colon + 1)) : std::nullopt;
    if (hasPort && (!port || *port > kMaxPort)) {
        return "\"" + address + "\" has no port from 1 to 65535 behind its last colon" + example;
    }
    const auto host = hasPort ? rest->substr(0, colon) : *rest;
    in_addr ipv4{};
    const bool isNumbers = host.find_first_not_of("0123456789.") == std::string::npos &&
                           host.find('.') != std::string::npos;
    if (address.empty() || (isNumbers && inet_pton(AF_INET, host.c_str(), &ipv4) != 1)) {
        return "\"" + address + "\" is no address of an agent" + example;
    }
    return "";
}

void addIdentity(CLI::App& command, SnmpSettings& settings)
{
    const auto* const group = "Whom the agent takes you for (default: snmp.conf, as snmpget does)";
    command.add_option("--snmp-version", settings.version, "SNMP version of the request")
        ->type_name("1|2c|3")
        ->check(oneOf({"1", "2c", "3"}))
        ->group(group);
    command.add_option("--community", settings.community, "Community, for versions 1 and 2c")
        ->type_name("NAME")
        ->group(group);
    command.add_option("--snmp-user", settings.user, "User, for version 3")
        ->type_name("NAME")
        ->group(group);
    command.add_option("--level", settings.level, "Security level, for version 3")
        ->type_name("noAuthNoPriv|authNoPriv|authPriv")
        ->check(oneOf({"noAuthNoPriv", "authNoPriv", "authPriv"}))
        ->group(group);
    command.add_option("--auth-protocol", settings.authProtocol, "For example SHA-256")
        ->type_name("NAME")
        ->group(group);
    command.add_option("--priv-protocol", settings.privProtocol, "For example AES")
        ->type_name("NAME")
        ->group(group);
    command
        .add_option("--credentials", settings.credentialsFile,
                    "File in the format of snmp.conf, with the passphrases; closed to others")
        ->type_name("FILE")
        ->group(group);
}

}  // namespace

void addSnmpOptions(CLI::App& command, SnmpSettings& settings)
{
    const auto* const group = "The agent";
    command
        .add_option("--agent", settings.agent,
                    "Where the agent listens; without it udp:127.0.0.1:161 with the packages, else "
                    "udp:127.0.0.1:1161")
        ->type_name("ADDRESS")
        ->check(CLI::Validator(refusalOfAgent, ""))
        ->capture_default_str()
        ->group(group);
    command.add_option("--timeout", settings.timeoutMs, "Milliseconds to wait for each answer")
        ->type_name("MS")
        ->check(CLI::Range(1U, kMaxAnswerMs))
        ->capture_default_str()
        ->group(group);
    command.add_option("--retries", settings.retries, "How often to ask again without an answer")
        ->type_name("N")
        ->check(CLI::Range(0U, kMaxRetries))
        ->capture_default_str()
        ->group(group);
    addIdentity(command, settings);
}

}  // namespace talvik::ctl
