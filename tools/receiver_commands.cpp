#include "tools/receiver_commands.h"

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
    addJsonOption(*command, options->socket);
    command->callback([options, run, &action] { action = [=] { return run(*options); }; });
    return command;
}

std::string footer(const std::string& examples)
{
    return "Asks the agent itself, on the machine that it runs on; no SNMP user is needed.\n"
           "Exit status: 0 done, 1 refused or no answer, 2 wrong usage.\n\nExamples:\n" +
           examples;
}

}  // namespace

void addReceiverCommands(CLI::App& trap, Action& action)
{
    auto options = std::make_shared<ReceiverOptions>();
    addCommand(trap, action, "status", "Show what became of the traps to each receiver", options,
               runReceiverStatus)
        ->footer(footer("  talvikctl trap status\n"
                        "  talvikctl trap status --json"));
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
    command->footer(footer("  talvikctl trap test 1"));
}

}  // namespace talvik::ctl
