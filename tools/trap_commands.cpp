#include "tools/command_line.h"
#include "tools/receiver_commands.h"
#include "tools/snmp_options.h"
#include "tools/trap_actions.h"
#include "tools/trap_destination.h"
#include "tools/trap_import.h"
#include "tools/trap_names.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <memory>
#include <string>

namespace talvik::ctl {

namespace {

constexpr std::uint32_t kMaxPort = 65535;
constexpr std::uint32_t kDefaultPort = 162;
constexpr std::uint32_t kDefaultVersion = 2;
constexpr std::uint32_t kDefaultType = 1;
constexpr const char* kNoUser = "--";

using Options = std::shared_ptr<TrapOptions>;
using Run = int (*)(const TrapOptions&);

/// Refuses what is no plain decimal number up to `maximum`; without it, 010 would be eight.
CLI::Validator numberUpTo(std::uint32_t maximum)
{
    return CLI::Validator(
        [maximum](const std::string& text) {
            const auto number = plainNumber(text);
            return number && *number <= maximum
                       ? std::string()
                       : "\"" + text + "\" is no number from 1 to " + std::to_string(maximum);
        },
        "");
}

void addVersion(CLI::App& command, TrapDestination& destination)
{
    command
        .add_option_function<std::string>(
            "--version",
            [&destination](const std::string& name) {
                destination.version = trapVersionCode(name);
            },
            "SNMP version of the traps: v1, v2c or v3")
        ->type_name("v1|v2c|v3")
        ->check([](const std::string& name) {
            return trapVersionCode(name) ? std::string()
                                         : "\"" + name + "\" is none of v1, v2c and v3";
        });
}

void addType(CLI::App& command, TrapDestination& destination)
{
    command
        .add_option_function<std::string>(
            "--type",
            [&destination](const std::string& name) { destination.type = trapTypeCode(name); },
            "Which alarms it gets: alarm (all, under the MIB's own OIDs), alarm-own-oid (all, "
            "under "
            "the alarms' own OIDs), alarm-legacy (as alarm), no-alarm; or the type's number")
        ->type_name("alarm|alarm-own-oid|alarm-legacy|no-alarm|NUMBER")
        ->check([](const std::string& name) {
            return trapTypeCode(name) ? std::string()
                                      : "\"" + name +
                                            "\" is none of alarm, no-alarm, alarm-own-oid and "
                                            "alarm-legacy";
        });
}

void addValues(CLI::App& command, TrapDestination& destination)
{
    command.add_option("--port", destination.port, "UDP port of the receiver")
        ->type_name("PORT")
        ->check(numberUpTo(kMaxPort));
    addVersion(command, destination);
    addType(command, destination);
    command.add_option("--user", destination.user, "User name for v3 traps; -- for none")
        ->type_name("NAME");
}

/// What every command has: where the agent is, JSON, help, and that it is run.
CLI::App* addCommand(CLI::App& trap, Action& action, const char* name, const char* description,
                     const Options& options, Run run)
{
    auto* command = trap.add_subcommand(name, description);
    addSnmpOptions(*command, options->snmp);
    addOutputOptions(*command, options->output);
    onCommand(*command, action, options->output, [=] { return run(*options); });
    return command;
}

constexpr const char* kDetails =
    "Passphrases and the like come from snmp.conf(5), as for snmpget, or from the\n"
    "--credentials file; never from the command line.";

void addList(CLI::App& trap, Action& action)
{
    auto options = std::make_shared<TrapOptions>();
    auto* list =
        addCommand(trap, action, "list", "List the trap destinations", options, runTrapList);
    addTableOptions(*list, options->output);
    setHelp(*list,
            {kDetails,
             kAskingExitStatus,
             {"talvikctl trap list", "talvikctl trap list --agent udp:192.0.2.1:1161 --json"}});
}

void addAdd(CLI::App& trap, Action& action)
{
    auto options = std::make_shared<TrapOptions>();
    auto& destination = options->destination;
    destination.port = kDefaultPort;
    destination.version = kDefaultVersion;
    destination.type = kDefaultType;
    destination.user = kNoUser;
    auto* add = addCommand(trap, action, "add", "Add a trap destination and print its index",
                           options, runTrapAdd);
    add->add_option("ADDRESS", destination.address, "IPv4 or IPv6 address, or a host name")
        ->required();
    addValues(*add, destination);
    add->add_option("--index", destination.index, "Index of the row; the lowest free one without")
        ->type_name("INDEX")
        ->check(numberUpTo(kMaxTrapIndex));
    setHelp(*add,
            {"Without options: port 162, v2c, type alarm, no user.\n" + std::string(kDetails),
             kAskingExitStatus,
             {"talvikctl trap add 192.0.2.10",
              "talvikctl trap add traps.example.net --port 10162 --version v3 --user monitor"}});
}

void addModify(CLI::App& trap, Action& action)
{
    auto options = std::make_shared<TrapOptions>();
    auto& destination = options->destination;
    auto* modify = addCommand(trap, action, "modify",
                              "Change what is named of a trap destination, and nothing else",
                              options, runTrapModify);
    modify->add_option("INDEX", destination.index, "Index of the row")
        ->required()
        ->check(numberUpTo(kMaxTrapIndex));
    modify->add_option("--address", destination.address, "IPv4 or IPv6 address, or a host name")
        ->type_name("ADDRESS");
    addValues(*modify, destination);
    setHelp(*modify, {kDetails,
                      kAskingExitStatus,
                      {"talvikctl trap modify 1 --port 10162",
                       "talvikctl trap modify 1 --version v3 --user monitor"}});
    modify->parse_complete_callback([&destination] {
        if (!destination.address && !destination.port && !destination.version &&
            !destination.type && !destination.user) {
            throw CLI::ValidationError("nothing to change: name --address, --port, --version, "
                                       "--type or --user",
                                       CLI::ExitCodes::RequiredError);
        }
    });
}

void addRemove(CLI::App& trap, Action& action)
{
    auto options = std::make_shared<TrapOptions>();
    auto* remove =
        addCommand(trap, action, "remove", "Remove trap destinations", options, runTrapRemove);
    remove->add_option("INDEX", options->indexes, "Indexes of the rows")
        ->required()
        ->check(numberUpTo(kMaxTrapIndex));
    setHelp(*remove, {kDetails,
                      kAskingExitStatus,
                      {"talvikctl trap remove 1", "talvikctl trap remove 3 4 7 --json"}});
}

}  // namespace

void addTrapCommands(CLI::App& talvikctl, Action& action)
{
    auto* trap = talvikctl.add_subcommand("trap", "The receivers of the agent's traps");
    trap->require_subcommand(1);
    setHelp(*trap, {"", "", {"talvikctl trap list", "talvikctl trap add 192.0.2.10"}});
    addList(*trap, action);
    addAdd(*trap, action);
    addModify(*trap, action);
    addRemove(*trap, action);
    addTrapImport(*trap, action);
    addReceiverCommands(*trap, action);
}

}  // namespace talvik::ctl
