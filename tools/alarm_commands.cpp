#include "backend/alarm_commands.h"
#include "tools/alarm_actions.h"
#include "tools/command_line.h"
#include "tools/socket_options.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

namespace talvik::ctl {

namespace {

constexpr auto kMaxId = std::numeric_limits<std::uint64_t>::max();
constexpr auto kMaxSerial = std::numeric_limits<std::uint32_t>::max();

using Options = std::shared_ptr<AlarmOptions>;
using Run = int (*)(const AlarmOptions&);

CLI::Validator wholeNumberFrom(std::uint64_t least, std::uint64_t most)
{
    return CLI::Validator(
        [least, most](const std::string& text) {
            return wholeNumber(text, least, most)
                       ? std::string()
                       : "\"" + text + "\" is no number from " + std::to_string(least) + " to " +
                             std::to_string(most);
        },
        "");
}

CLI::App* addCommand(CLI::App& alarm, Action& action, const char* name, const char* description,
                     const Options& options, Run run)
{
    auto* command = alarm.add_subcommand(name, description);
    addSocketOptions(*command, options->socket);
    addOutputOptions(*command, options->socket.output);
    onCommand(*command, action, options->socket.output, [=] { return run(*options); });
    return command;
}

void addParameters(CLI::App& command, AlarmOptions& options)
{
    // Each value by itself: a list would take what follows and split what stands in brackets.
    command
        .add_option_function<std::string>(
            "--param",
            [&options](const std::string& value) { options.parameters.push_back(value); },
            "One of its values, in order; once for each. &#44; stands for a comma, &#38; for an "
            "ampersand")
        ->type_name("VALUE")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast)
        ->trigger_on_parse()
        ->check(CLI::Validator(parameterRefusal, ""));
}

void addSeverity(CLI::App& command, AlarmOptions& options, const char* fallback)
{
    options.report.severity = *severityLevel(fallback);
    command
        .add_option_function<std::string>(
            "--severity",
            [&options](const std::string& text) { options.report.severity = *severityLevel(text); },
            "How severe it is: " + severityNames())
        ->type_name("info|warning|minor|major|critical|NUMBER")
        ->default_str(fallback)
        ->check(CLI::Validator(
            [](const std::string& text) {
                return severityLevel(text) ? std::string()
                                           : "\"" + text + "\" is none of " + severityNames();
            },
            ""));
}

/// raise and event.
void addReport(CLI::App& alarm, Action& action, const char* name, const char* description,
               const char* severity, Run run)
{
    auto options = std::make_shared<AlarmOptions>();
    auto* command = addCommand(alarm, action, name, description, options, run);
    command
        ->add_option_function<std::string>(
            "ID",
            [options](const std::string& text) {
                options->report.id = *wholeNumber(text, 1, kMaxId);
            },
            "Its id in the alarm catalogue")
        ->required()
        ->check(wholeNumberFrom(1, kMaxId));
    addParameters(*command, *options);
    addSeverity(*command, *options, severity);
    command
        ->add_option_function<std::string>(
            "--time",
            [options](const std::string& text) {
                options->report.time = wholeNumber(text, 0, backend::kMaxTime);
            },
            "When it occurred, in seconds since 1970; now without it")
        ->type_name("SECONDS")
        ->check(wholeNumberFrom(0, backend::kMaxTime));
    const auto example = std::string("talvikctl alarm ") + name + " 501010001";
    setHelp(*command, {"Prints the serial number.",
                       kAskingExitStatus,
                       {example + " --param DAE000 --param 7 --param 2102350TLV --param 1",
                        example + " --severity minor --socket /run/talvik/backend.sock --json"}});
}

void addList(CLI::App& alarm, Action& action)
{
    auto options = std::make_shared<AlarmOptions>();
    auto* list = addCommand(alarm, action, "list", "Show the active alarms by serial number",
                            options, runAlarmList);
    list->add_option("--after", options->after, "Only those with a greater serial number")
        ->type_name("SERIAL")
        ->check(wholeNumberFrom(0, kMaxSerial));
    list->add_option("--limit", options->limit, "Show at most so many; all without it")
        ->type_name("N")
        ->check(wholeNumberFrom(1, kAllAlarms));
    addTableOptions(*list, options->socket.output);
    setHelp(*list, {"",
                    kAskingExitStatus,
                    {"talvikctl alarm list", "talvikctl alarm list --wide --color always | less -R",
                     "talvikctl alarm list --after 17 --limit 50 --json"}});
}

void addClear(CLI::App& alarm, Action& action)
{
    auto options = std::make_shared<AlarmOptions>();
    auto* clear = addCommand(alarm, action, "clear", "Clear active alarms", options, runAlarmClear);
    clear->add_option("SERIAL", options->serials, "Their serial numbers")
        ->required()
        ->check(wholeNumberFrom(1, kMaxSerial));
    setHelp(*clear, {"",
                     kAskingExitStatus,
                     {"talvikctl alarm clear 17", "talvikctl alarm clear 3 4 7 --json"}});
}

void addResend(CLI::App& alarm, Action& action)
{
    auto options = std::make_shared<AlarmOptions>();
    auto* resend =
        addCommand(alarm, action, "resend", "Send all active alarms to the trap receivers again",
                   options, runAlarmResend);
    setHelp(*resend, {"", kAskingExitStatus, {"talvikctl alarm resend"}});
}

void addScenario(CLI::App& alarm, Action& action)
{
    auto options = std::make_shared<AlarmOptions>();
    auto* scenario = addCommand(alarm, action, "scenario", "Raise and clear alarms as a file says",
                                options, runAlarmScenario);
    scenario->add_option("FILE", options->scenario, "The scenario, in JSON")
        ->type_name("FILE")
        ->required();
    scenario->add_flag("--keep-going", options->keepGoing, "Go on when a step fails");
    setHelp(*scenario,
            {"The file, of which nothing is done unless all of it is right:\n"
             "  {\"steps\": [\n"
             "    {\"raise\": {\"id\": \"501010001\", \"params\": [\"DAE000\", \"7\"],\n"
             "               \"severity\": \"major\", \"as\": \"disk1\"}},\n"
             "    {\"pauseMs\": 200},\n"
             "    {\"clear\": \"disk1\"},\n"
             "    {\"repeat\": {\"times\": 100, \"steps\": [{\"event\": {\"id\": "
             "\"501010004\"}}]}}]}\n\n"
             "With --json each step is a line, and so is the end.",
             kAskingExitStatus,
             {"talvikctl alarm scenario etc/example-scenario.json",
              "talvikctl alarm scenario --keep-going --json etc/example-scenario.json"}});
}

}  // namespace

void addAlarmCommands(CLI::App& talvikctl, Action& action)
{
    auto* alarm =
        talvikctl.add_subcommand("alarm", "The back end's alarms: list, raise and clear them");
    alarm->require_subcommand(1);
    setHelp(*alarm, {"", "", {"talvikctl alarm list", "talvikctl alarm raise 501010001"}});
    addList(*alarm, action);
    addReport(*alarm, action, "raise", "Raise an alarm, which stays active until it is cleared",
              kAlarmSeverity, runAlarmRaise);
    addReport(*alarm, action, "event", "Report an event, which does not last", kEventSeverity,
              runAlarmEvent);
    addClear(*alarm, action);
    addResend(*alarm, action);
    addScenario(*alarm, action);
}

}  // namespace talvik::ctl
