#include "tools/receiver_commands.h"

#include "tools/command_line.h"
#include "tools/receiver_actions.h"
#include "tools/socket_options.h"
#include "tools/trap_names.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace talvik::ctl {

namespace {

using Options = std::shared_ptr<ReceiverOptions>;
using Run = int (*)(const ReceiverOptions&);

CLI::App* addCommand(CLI::App& trap, Action& action, const char* name, const char* description,
                     const Options& options, Run run)
{
    auto* command = trap.add_subcommand(name, description);
    addSocketOptions(*command, options->socket);
    addOutputOptions(*command, options->socket.output);
    onCommand(*command, action, options->socket.output, [=] { return run(*options); });
    return command;
}

constexpr const char* kDetails =
    "Asks the agent itself, on the machine that it runs on; no SNMP user is needed.";

}  // namespace

void addReceiverCommands(CLI::App& trap, Action& action)
{
    auto options = std::make_shared<ReceiverOptions>();
    auto* status =
        addCommand(trap, action, "status", "Show what became of the traps to each receiver",
                   options, runReceiverStatus);
    addTableOptions(*status, options->socket.output);
    setHelp(*status, {kDetails,
                      kAskingExitStatus,
                      {"talvikctl trap status", "talvikctl trap status --wide",
                       "talvikctl trap status --json"}});
    auto test = std::make_shared<ReceiverOptions>();
    auto* command =
        addCommand(trap, action, "test", "Send a test trap to one receiver", test, runReceiverTest);
    command
        ->add_option_function<std::string>(
            "INDEX", [test](const std::string& text) { test->index = *plainNumber(text); },
            "Index of the receiver's row")
        ->required()
        ->check([](const std::string& text) {
            return plainNumber(text) ? std::string()
                                     : "\"" + text + "\" is no number from 1 to 2147483647";
        });
    command
        ->add_option("--wait", test->waitSeconds,
                     "Wait so long for what becomes of it; 0 does not wait")
        ->type_name("SECONDS")
        ->check(CLI::Range(0U, kMostTestWait))
        ->capture_default_str();
    setHelp(*command,
            {std::string(kDetails) +
                 "\nA trap is done with once the network has it; an inform, once the receiver\n"
                 "acknowledges it or the agent gives it up.",
             "0 sent or acknowledged, or not waited for, 1 refused, failed or given up, 2 wrong\n"
             "usage or a file that cannot be used, 3 no answer of the agent, or nothing decided\n"
             "within the wait.",
             {"talvikctl trap test 1", "talvikctl trap test 1 --wait 60 --json"}});
}

}  // namespace talvik::ctl
