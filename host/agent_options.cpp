#include "host/agent_options.h"

#include "host/installation_paths.h"
#include "host/link/backend_choice.h"
#include "host/startup_error.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace talvik {

namespace {

std::string notEmpty(const std::string& value)
{
    return value.empty() ? "an endpoint is due, for example udp:127.0.0.1:1161" : "";
}

std::string backendName(const std::string& value)
{
    try {
        parseBackendName(value);
        return {};
    } catch (const StartupError& error) {
        return error.what();
    }
}

std::string agentxMaster(const std::string& value)
{
    return parseAgentxAddress(value) ? "" : "\"" + value + "\": " + agentxAddressHint();
}

/// A request may take twice as long, and snmpd waits a second before it asks again.
constexpr unsigned kTimeoutUnderMaster = 400;
constexpr unsigned kLeastTimeout = 50;
constexpr unsigned kLongestTimeout = 60000;

void declareAgentx(CLI::App& app, AgentOptions& options)
{
    app.add_option_function<std::string>(
           "--agentx",
           [&options](const std::string& text) { options.agentx = parseAgentxAddress(text); },
           "Serve as a subagent of the AgentX master (snmpd with \"master agentx\") at this "
           "address "
           "of this machine, and listen nowhere: who may ask what is the master's to say. Default "
           "address: unix:/var/agentx/master")
        ->type_name("[ADDR]")
        ->expected(0, 1)
        ->default_str(AgentxAddress::kDefault)
        ->check(agentxMaster, "address")
        ->excludes("--listen");
}

void declare(CLI::App& app, AgentOptions& options)
{
    app.add_option(
           "--config", options.configFile,
           "Agent configuration: access control and what else net-snmp's configuration knows")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option("--device", options.deviceFile, "Device configuration (XML)")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option("--module", options.moduleFile, "MIB module to load")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option("--module-failure", options.moduleFailure,
                   "What to do when the module cannot be used: stop, or continue and serve all "
                   "else")
        ->type_name("CHOICE")
        ->check(CLI::IsMember({"stop", "continue"}))
        ->capture_default_str();
    app.add_option("--mib-dir", options.mibDir, "Directory of the module's MIB description")
        ->type_name("DIR")
        ->capture_default_str();
    app.add_option("--state-dir", options.stateDir,
                   "Directory of the SNMP engine's state, made when it is missing")
        ->type_name("DIR")
        ->capture_default_str();
    app.add_option("--listen", options.listen,
                   "Endpoint, for example udp:127.0.0.1:1161, udp6:[::1]:1161 or "
                   "tcp:127.0.0.1:1161; may be "
                   "given several times. Default: agentAddress of the agent configuration, or "
                   "udp:127.0.0.1:1161")
        ->type_name("ADDR")
        ->allow_extra_args(false)
        ->check(notEmpty, "not empty");
    declareAgentx(app, options);
    app.add_option("--backend", options.backend,
                   "Management back end: embedded, or unix:PATH of its socket")
        ->type_name("BACKEND")
        ->check(backendName, "embedded or unix:PATH")
        ->capture_default_str();
    app.add_option(
           "--backend-timeout", options.backendTimeout,
           "How long an answer of the back end's may take, and the rows of one request; 400 "
           "with --agentx unless it is named, so that the master does not wait in vain")
        ->type_name("MS")
        ->check(CLI::Range(kLeastTimeout, kLongestTimeout))
        ->capture_default_str();
    app.add_option("--trap-settings", options.trapSettings,
                   "Community, SNMPv3 users and informs of the trap receivers (JSON); the defaults "
                   "hold when there is no such file")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option("--socket", options.socket,
                   "Unix-domain socket for talvikctl. Default: agent.sock in the state directory")
        ->type_name("PATH");
    app.add_option("--log-level", options.log.level, "trace, debug, info, warn or error")
        ->type_name("LEVEL")
        ->check(CLI::IsMember({"trace", "debug", "info", "warn", "error"}))
        ->capture_default_str();
    app.add_option("--log-file", options.log.file,
                   "Log file, rotated; lines go to standard error as well")
        ->type_name("FILE");
    app.add_flag("--check", options.checkOnly,
                 "Read and check everything, say OK and end; nothing is changed or opened");
    app.set_version_flag("--version", std::string("talvik-agentd " TALVIK_VERSION));
    app.footer(
        "Exit codes: 0 ended as asked, 1 cannot start, 2 wrong usage.\n"
        "SIGTERM and SIGINT end the agent. SIGHUP has it read access control, users and trap "
        "settings again and open the log file anew; all else takes a restart, and the log "
        "says what.");
}

void setDefaultPaths(AgentOptions& options)
{
    const auto paths = InstallationPaths::ofThisProgram();
    options.configFile = paths.configFile("talvik-agentd.conf");
    options.deviceFile = paths.configFile("talvik-device.xml");
    options.moduleFile = paths.moduleFile("libSnmpTalvikMibModule.so");
    options.mibDir = paths.mibDirectory();
    options.stateDir = paths.stateDirectory();
    options.trapSettings = paths.configFile("talvik-traps.json");
}

}  // namespace

std::optional<int> parseCommandLine(int argc, const char* const* argv, AgentOptions& options)
{
    setDefaultPaths(options);
    CLI::App app("SNMP agent of a storage controller: serves the tables of a MIB module",
                 "talvik-agentd");
    declare(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error, std::cout, std::cerr) == 0 ? kExitOk : kExitUsage;
    }
    if (options.agentx && app.count("--backend-timeout") == 0) {
        options.backendTimeout = kTimeoutUnderMaster;
    }
    if (options.socket.empty()) {
        options.socket = options.stateDir + "/agent.sock";
    }
    return std::nullopt;
}

}  // namespace talvik
