#pragma once

#include "tools/command.h"
#include "tools/output_options.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// What the command lines of all commands have in common.
namespace talvik::ctl {

/// What the help of a command says behind its options. Help, completion, the manual page and the
/// reference are made from the command tree, so that none can drift (`command_tree.h`).
struct CommandHelp {
    std::string details;     ///< lines, or none
    std::string exitStatus;  ///< lines, or none for a command that only groups others
    std::vector<std::string> examples;
};

/// Exit status of commands that ask the agent or the back end, and of those that do not.
extern const char* const kAskingExitStatus;
extern const char* const kLocalExitStatus;

/// Titles of the parts of a help text behind the options.
extern const char* const kExitStatusTitle;
extern const char* const kExamplesTitle;

void setHelp(CLI::App& command, const CommandHelp& help);

/// Adds --json and --quiet.
void addOutputOptions(CLI::App& command, OutputOptions& output);

/// Adds --wide and --color.
void addTableOptions(CLI::App& command, OutputOptions& output);

/// Refuses whatever is not one of `words`.
CLI::Validator oneOf(const std::vector<std::string>& words);

/// Has `run` carried out when `command` is on the command line; `output` must outlive that.
void onCommand(CLI::App& command, Action& action, const OutputOptions& output, const Action& run);

}  // namespace talvik::ctl
