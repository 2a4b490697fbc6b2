#include "tools/trap_import.h"

#include "host/startup_error.h"
#include "tools/command_line.h"
#include "tools/progress.h"
#include "tools/safe_text.h"
#include "tools/snmp_options.h"
#include "tools/trap_actions.h"
#include "tools/trap_import_file.h"
#include "tools/trap_import_output.h"
#include "tools/trap_import_plan.h"
#include "tools/trap_import_run.h"
#include "tools/trap_output.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace talvik::ctl {

namespace {

struct ImportOptions {
    SnmpSettings snmp;
    OutputOptions output;
    std::string file;
    bool replace = false;
    bool dryRun = false;
};

/// Prints what came of it. Returns the exit status.
int report(const ImportOptions& options, const TrapImportPlan& plan,
           const std::vector<TrapChangeOutcome>& outcomes)
{
    const auto* failure = failureOf(outcomes);
    const int status = failure == nullptr ? kExitGood : exitStatusOf(failure->kind());
    if (options.output.json) {
        std::cout << jsonText(trapImportJson(options.snmp.agent, options.dryRun, plan, outcomes));
        return status;
    }
    const auto summary = trapImportSummary(plan, outcomes);
    std::cout << trapImportTable(outcomes, tableStyle(options.output));
    if (failure == nullptr) {
        std::cout << summary;
        return status;
    }
    std::cout.flush();
    std::cerr << failureText(*failure) << "talvikctl: " << summary;
    return status;
}

int runImport(const ImportOptions& options)
{
    const auto wanted = loadTrapList(options.file);
    if (wanted.empty() && options.replace) {
        throw StartupError("receiver list " + printable(trapListName(options.file)) +
                           ": has no destination, so --replace would leave no receiver; to have "
                           "none, use talvikctl trap remove");
    }
    int outcome = kExitGood;
    const int status = onTrapTable(options.snmp, options.output, [&](TrapTable& table) {
        const Progress::Span span("list the trap destinations");
        const auto plan = planTrapImport(wanted, table.list(), options.replace, options.snmp.agent);
        const auto outcomes = options.dryRun ? plannedOnly(plan) : carryOut(table, plan);
        Progress::ofThisProgram().finish();
        outcome = report(options, plan, outcomes);
    });
    return status == kExitGood ? outcome : status;
}

constexpr const char* kDetails =
    "FILE is what talvikctl trap list --json prints, or a list written by hand:\n"
    "  [\"192.0.2.10\",\n"
    "   {\"address\": \"traps.example.net\", \"port\": 10162, \"version\": \"v3\",\n"
    "    \"type\": \"alarm-own-oid\", \"user\": \"monitor\", \"index\": 7}]\n"
    "Nothing is changed unless all of it is right. A receiver is known by its address and\n"
    "port (162 without one); what the list leaves out of one that is there stays as it is,\n"
    "and a new one gets what trap add gives it. One that stands there several times needs an\n"
    "index each, and the rows of these are meant. Else the index is for new ones: where another\n"
    "row has it, the lowest free one is taken. With --replace that row, if it is not in the\n"
    "list, becomes the new one.\n"
    "\n"
    "It adds first, then modifies, then removes, and stops at the first failure; the same\n"
    "command again does the rest.\n"
    "\n"
    "Passphrases and the like come from snmp.conf(5), as for snmpget, or from the\n"
    "--credentials file; never from the command line.";

}  // namespace

void addTrapImport(CLI::App& trap, Action& action)
{
    auto options = std::make_shared<ImportOptions>();
    auto* import = trap.add_subcommand(
        "import", "Add the trap destinations of a list, and change those that differ");
    addSnmpOptions(*import, options->snmp);
    import->add_option("FILE", options->file, "The list, in JSON; - for standard input")
        ->type_name("FILE")
        ->required();
    import->add_flag("--replace", options->replace,
                     "Remove the trap destinations that are not in the list");
    import->add_flag("--dry-run", options->dryRun, "Show what would be done, and change nothing");
    addOutputOptions(*import, options->output);
    addTableOptions(*import, options->output);
    setHelp(*import, {kDetails,
                      kAskingExitStatus,
                      {"talvikctl trap list --json > receivers.json",
                       "talvikctl trap import --dry-run receivers.json",
                       "talvikctl trap import --replace receivers.json --agent udp:192.0.2.1:1161",
                       "echo '[\"192.0.2.10\", \"192.0.2.11\"]' | talvikctl trap import -"}});
    onCommand(*import, action, options->output, [options] { return runImport(*options); });
}

}  // namespace talvik::ctl
