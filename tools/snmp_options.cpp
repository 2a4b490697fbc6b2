#include "tools/snmp_options.h"

#include "tools/command_line.h"

#include <CLI/CLI.hpp>

namespace talvik::ctl {

namespace {

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
