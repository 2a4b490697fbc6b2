#include "tools/command_line.h"

#include "tools/progress.h"

namespace talvik::ctl {

namespace {

constexpr const char* kGroup = "Output";

}  // namespace

const char* const kAskingExitStatus =
    "0 done, 1 refused or failed, 2 wrong usage or a file that cannot be used,\n"
    "3 no answer, or none that makes sense.";
const char* const kLocalExitStatus =
    "0 done, 1 failed, 2 wrong usage or a file that cannot be used.";
const char* const kExitStatusTitle = "Exit status:\n  ";
const char* const kExamplesTitle = "Examples:\n";

void setHelp(CLI::App& command, const CommandHelp& help)
{
    std::string footer = help.details;
    if (!help.exitStatus.empty()) {
        footer += (footer.empty() ? "" : "\n\n") + std::string(kExitStatusTitle);
        for (const char c : help.exitStatus) {
            footer += c == '\n' ? std::string("\n  ") : std::string(1, c);
        }
    }
    footer += (footer.empty() ? "" : "\n\n") + std::string(kExamplesTitle);
    for (const auto& example : help.examples) {
        footer += (&example == &help.examples.front() ? "  " : "\n  ") + example;
    }
    command.footer(footer);
}

void addOutputOptions(CLI::App& command, OutputOptions& output)
{
    command.add_flag("--json", output.json, "Print JSON for programs")->group(kGroup);
    command
        .add_flag(
            "--quiet", output.quiet,
            "Show no progress of what takes more than a second; it is shown on terminals only")
        ->group(kGroup);
}

void addTableOptions(CLI::App& command, OutputOptions& output)
{
    command.add_flag("--wide", output.wide, "Do not cut long texts to fit the terminal")
        ->group(kGroup);
    command
        .add_option("--color", output.color,
                    "Use colours: on a terminal unless NO_COLOR is set, always or never")
        ->type_name("auto|always|never")
        ->check(oneOf({"auto", "always", "never"}))
        ->capture_default_str()
        ->group(kGroup);
}

CLI::Validator oneOf(const std::vector<std::string>& words)
{
    return CLI::Validator(
        [words](const std::string& text) {
            std::string known;
            for (const auto& word : words) {
                if (text == word) {
                    return std::string();
                }
                known += (known.empty() ? "" : ", ") + word;
            }
            return "\"" + text + "\" is none of " + known;
        },
        "");
}

void onCommand(CLI::App& command, Action& action, const OutputOptions& output, const Action& run)
{
    command.callback([&output, run, &action] {
        action = [&output, run] {
            Progress::ofThisProgram().allow(wantsProgress(output));
            return run();
        };
    });
}

}  // namespace talvik::ctl
