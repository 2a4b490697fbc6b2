#include "tools/completion.h"

#include <algorithm>

namespace talvik::ctl {

namespace {

std::string replaced(std::string text, const std::string& what, const std::string& by)
{
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const auto& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

std::vector<std::string> optionNames(const CommandEntry& command)
{
    std::vector<std::string> names;
    for (const auto& option : command.options) {
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    return names;
}

/// What may stand where no option does: commands, or the choices of arguments.
std::vector<std::string> plainWords(const CommandEntry& command)
{
    std::vector<std::string> words;
    for (const auto& below : command.commands) {
        words.push_back(below.name);
    }
    for (const auto& argument : command.arguments) {
        words.insert(words.end(), argument.choices.begin(), argument.choices.end());
    }
    return words;
}

bool takesFiles(const CommandEntry& command)
{
    return std::any_of(command.arguments.begin(), command.arguments.end(),
                       [](const auto& argument) { return argument.takesFile; });
}

// bash

constexpr const char* kBashBegin =
    R"(# Completion of talvikctl for bash: written by "talvikctl completion bash".
_talvikctl_files() {
    local IFS=$'\n'
    compopt -o filenames 2>/dev/null
    COMPREPLY=($(compgen -f -- "$1"))
}

_talvikctl() {
    local cur="${COMP_WORDS[COMP_CWORD]}" prev="${COMP_WORDS[COMP_CWORD-1]}"
    local path=talvikctl names="" options="" files="" i
    COMPREPLY=()
    if [[ $cur == "=" ]]; then
        cur=""
    elif [[ $prev == "=" ]]; then
        prev="${COMP_WORDS[COMP_CWORD-2]}"
    fi
    for ((i = 1; i < COMP_CWORD; i++)); do
        case "$path ${COMP_WORDS[i]}" in
        "talvikctl help") ;;
)";

constexpr const char* kBashEnd = R"(    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
    elif [[ -n $files ]]; then
        _talvikctl_files "$cur"
    else
        COMPREPLY=($(compgen -W "${names:-$options}" -- "$cur"))
    fi
}
complete -F _talvikctl talvikctl
)";

std::string bashValue(const OptionEntry& option)
{
    if (option.takesFile) {
        return R"(_talvikctl_files "$cur"; return)";
    }
    if (option.choices.empty()) {
        return "return";
    }
    return "COMPREPLY=($(compgen -W \"" + joined(option.choices) + R"(" -- "$cur")); return)";
}

// zsh

std::string zshQuoted(const std::string& text)
{
    return replaced(text, "'", R"('\'')");
}

std::string zshDescription(const std::string& text)
{
    return zshQuoted(replaced(
        replaced(replaced(replaced(text, "\\", "\\\\"), ":", "\\:"), "[", "\\["), "]", "\\]"));
}

std::string zshFunction(const CommandEntry& command)
{
    return "_" + replaced(replaced(command.path, " ", "_"), "-", "_");
}

std::string zshValue(const OptionEntry& option)
{
    if (option.takesFile) {
        return "_files";
    }
    return option.choices.empty() ? " " : "(" + joined(option.choices) + ")";
}

/// What `_arguments` is told of the options and arguments of a command.
std::string zshArguments(const CommandEntry& command)
{
    std::string text;
    for (const auto& option : command.options) {
        for (const auto& name : option.names) {
            const std::string repeat = option.repeated || option.names.size() > 1 ? "*" : "";
            text += " \\\n        '" + repeat + name + (option.value.empty() ? "" : "=") + "[" +
                    zshDescription(option.description) + "]";
            text += option.value.empty()
                        ? "'"
                        : ":" + zshDescription(option.value) + ":" + zshValue(option) + "'";
        }
    }
    for (const auto& argument : command.arguments) {
        text += " \\\n        '" + std::string(argument.repeated ? "*" : "") + ":" +
                zshDescription(argument.names.front()) + ":" + zshValue(argument) + "'";
    }
    return text;
}

std::string zshCommands(const CommandEntry& command)
{
    std::string text = " \\\n        '1:command:->command' '*::argument:->argument'\n"
                       "    case $state in\n    command)\n        local -a commands=(\n";
    for (const auto& below : command.commands) {
        text += "            '" + below.name + ":" + zshDescription(below.description) + "'\n";
    }
    text += "        )\n        _describe command commands ;;\n"
            "    argument)\n        case $line[1] in\n";
    for (const auto& below : command.commands) {
        text += "        " + below.name + ") " + zshFunction(below) + " ;;\n";
    }
    return text + "        esac ;;\n    esac\n";
}

// fish

std::string fishQuoted(const std::string& text)
{
    return "'" + replaced(replaced(text, "\\", "\\\\"), "'", "\\'") + "'";
}

/// The path without the program's name.
std::string fishPath(const CommandEntry& command)
{
    const auto blank = command.path.find(' ');
    return blank == std::string::npos ? "" : command.path.substr(blank + 1);
}

std::string fishValue(const OptionEntry& option)
{
    if (option.takesFile) {
        return " -r -F";
    }
    return option.choices.empty() ? " -x" : " -x -a " + fishQuoted(joined(option.choices));
}

constexpr const char* kFishBegin =
    R"(# Completion of talvikctl for fish: written by "talvikctl completion fish".
function __talvikctl_at
    set -l path
    for word in (commandline -opc)[2..]
        set -l longer (string join -- ' ' $path $word)
        if contains -- $longer)";

constexpr const char* kFishMiddle = R"(
            set path $path $word
        end
    end
    test "$path" = "$argv"
end

complete -c talvikctl -f
)";

}  // namespace

std::string bashCompletion(const CommandEntry& talvikctl)
{
    std::string walk;
    std::string values;
    std::string words;
    for (const auto* command : allCommands(talvikctl)) {
        const auto quoted = "\"" + command->path + "\"";
        if (command != &talvikctl && command->path != "talvikctl help") {
            walk += "        " + quoted + ") path=" + quoted + " ;;\n";
        }
        for (const auto& option : command->options) {
            for (const auto& name : option.names) {
                if (!option.value.empty()) {
                    values += "    \"" + command->path + " " + name + "\") " + bashValue(option) +
                              " ;;\n";
                }
            }
        }
        words += "    " + quoted + ")\n        names=\"" + joined(plainWords(*command)) +
                 "\"\n        options=\"" + joined(optionNames(*command)) + "\"\n" +
                 (takesFiles(*command) ? "        files=1\n" : "") + "        ;;\n";
    }
    return kBashBegin + walk + "        esac\n    done\n    case \"$path $prev\" in\n" + values +
           "    esac\n    case \"$path\" in\n" + words + kBashEnd;
}

std::string zshCompletion(const CommandEntry& talvikctl)
{
    std::string text =
        "#compdef talvikctl\n"
        "# Completion of talvikctl for zsh: written by \"talvikctl completion zsh\".\n";
    for (const auto* command : allCommands(talvikctl)) {
        text += "\n" + zshFunction(*command) +
                "() {\n    local curcontext=\"$curcontext\" state state_descr line\n"
                "    typeset -A opt_args\n    _arguments -C" +
                zshArguments(*command) +
                (command->commands.empty() ? "\n" : zshCommands(*command)) + "}\n";
    }
    return text + "\nif [[ $funcstack[1] == _talvikctl ]]; then\n    _talvikctl \"$@\"\nelse\n"
                  "    compdef _talvikctl talvikctl\nfi\n";
}

std::string fishCompletion(const CommandEntry& talvikctl)
{
    std::string paths;
    std::string lines;
    for (const auto* command : allCommands(talvikctl)) {
        const auto path = fishPath(*command);
        paths += path.empty() ? "" : " " + fishQuoted(path);
        const auto here = "complete -c talvikctl -n " +
                          fishQuoted(path.empty() ? "__talvikctl_at" : "__talvikctl_at " + path);
        for (const auto& below : command->commands) {
            lines += here + " -a " + below.name + " -d " + fishQuoted(below.description) + "\n";
        }
        for (const auto& option : command->options) {
            for (const auto& name : option.names) {
                const bool isLong = name.rfind("--", 0) == 0;
                lines += here + (isLong ? " -l " + name.substr(2) : " -s " + name.substr(1)) +
                         (option.value.empty() ? "" : fishValue(option)) + " -d " +
                         fishQuoted(option.description) + "\n";
            }
        }
        for (const auto& argument : command->arguments) {
            if (argument.takesFile) {
                lines += here + " -F\n";
            } else if (!argument.choices.empty()) {
                lines += here + " -a " + fishQuoted(joined(argument.choices)) + "\n";
            }
        }
    }
    return kFishBegin + paths + kFishMiddle + lines;
}

}  // namespace talvik::ctl
