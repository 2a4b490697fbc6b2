#include "tools/command_line.h"
#include "tools/completion.h"
#include "tools/help_pages.h"
#include "tools/safe_text.h"
#include "tools/trap_output.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace talvik::ctl {

namespace {

struct HelpOptions {
    std::vector<std::string> words;
    std::string format = "text";
    OutputOptions output;
};

/// Null when there is no such command.
const CLI::App* find(const CLI::App& talvikctl, const std::vector<std::string>& words,
                     std::string& parentPath)
{
    const auto* found = &talvikctl;
    for (const auto& word : words) {
        const auto below = found->get_subcommands(
            [&word](const CLI::App* app) { return app->get_name() == word; });
        if (below.empty()) {
            return nullptr;
        }
        parentPath += (parentPath.empty() ? "" : " ") + found->get_name();
        found = below.front();
    }
    return found;
}

int runHelp(const CLI::App& talvikctl, const HelpOptions& options)
{
    std::string parentPath;
    const auto* command = find(talvikctl, options.words, parentPath);
    if (command == nullptr) {
        std::cerr << "talvikctl: there is no such command; talvikctl help shows all\n";
        return kExitUsage;
    }
    const auto entry = commandTree(*command, parentPath);
    if (options.output.json || options.format == "json") {
        std::cout << jsonText(helpJson(entry));
    } else if (options.format == "man") {
        std::cout << manualPage(entry);
    } else if (options.format == "markdown") {
        std::cout << markdownPage(entry);
    } else {
        // Its own help() would be that of the command that was parsed: of this one.
        std::cout << command->get_formatter()->make_help(command, entry.path,
                                                         CLI::AppFormatMode::Normal);
    }
    return kExitGood;
}

}  // namespace

void addHelpCommand(CLI::App& talvikctl, Action& action)
{
    auto options = std::make_shared<HelpOptions>();
    auto* help = talvikctl.add_subcommand("help", "Show the help of a command");
    help->add_option("COMMAND", options->words, "The command's words; all commands without it");
    help->add_option("--format", options->format,
                     "How it is written; other formats than text hold all commands below it")
        ->type_name("text|json|man|markdown")
        ->check(oneOf({"text", "json", "man", "markdown"}))
        ->capture_default_str();
    addOutputOptions(*help, options->output);
    setHelp(*help, {"",
                    kLocalExitStatus,
                    {"talvikctl help alarm raise", "talvikctl help --format man | man -l -",
                     "talvikctl help trap --json"}});
    onCommand(*help, action, options->output,
              [options, &talvikctl] { return runHelp(talvikctl, *options); });
}

void addCompletionCommand(CLI::App& talvikctl, Action& action)
{
    auto shell = std::make_shared<std::string>();
    auto* completion = talvikctl.add_subcommand(
        "completion", "Print a script that makes a shell complete talvikctl's command lines");
    completion->add_option("SHELL", *shell, "The shell")
        ->type_name("bash|zsh|fish")
        ->check(oneOf({"bash", "zsh", "fish"}))
        ->required();
    setHelp(*completion,
            {"Where to put it, for all users: /usr/share/bash-completion/completions/talvikctl,\n"
             "/usr/share/zsh/vendor-completions/_talvikctl or\n"
             "/usr/share/fish/vendor_completions.d/talvikctl.fish.",
             kLocalExitStatus,
             {"talvikctl completion bash > ~/.local/share/bash-completion/completions/talvikctl",
              "talvikctl completion zsh > ~/.zfunc/_talvikctl",
              "talvikctl completion fish > ~/.config/fish/completions/talvikctl.fish"}});
    completion->callback([shell, &talvikctl, &action] {
        action = [shell, &talvikctl] {
            const auto tree = commandTree(talvikctl);
            const auto write = *shell == "bash"  ? bashCompletion
                               : *shell == "zsh" ? zshCompletion
                                                 : fishCompletion;
            std::cout << write(tree);
            return kExitGood;
        };
    });
}

}  // namespace talvik::ctl
