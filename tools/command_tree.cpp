#include "tools/command_tree.h"

#include "tools/command_line.h"
#include "tools/snmp_settings.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>

namespace talvik::ctl {

namespace {

std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::string part;
    for (const char c : text + separator) {
        if (c == separator) {
            parts.push_back(part);
            part.clear();
        } else {
            part += c;
        }
    }
    return parts;
}

bool standsForAnything(const std::string& word)
{
    return std::all_of(word.begin(), word.end(),
                       [](unsigned char c) { return std::isupper(c) != 0; });
}

/// The name of the value without what the library adds about its range.
std::string valueOf(const CLI::Option& option)
{
    if (option.get_items_expected_max() == 0) {
        return {};
    }
    const auto type = option.get_type_name();
    return type.substr(0, type.find(':'));
}

std::vector<std::string> choicesOf(const std::string& value)
{
    std::vector<std::string> choices;
    if (value.find('|') != std::string::npos) {
        for (const auto& word : split(value, '|')) {
            if (!standsForAnything(word)) {
                choices.push_back(word);
            }
        }
    }
    return choices;
}

OptionEntry entryOf(const CLI::Option& option)
{
    constexpr int kMany = 1000;
    OptionEntry entry;
    for (const auto& name : option.get_snames()) {
        entry.names.push_back("-" + name);
    }
    for (const auto& name : option.get_lnames()) {
        entry.names.push_back("--" + name);
    }
    if (entry.names.empty()) {
        entry.names.push_back(option.get_name(true));
    }
    entry.value = valueOf(option);
    entry.choices = choicesOf(entry.value);
    entry.description = option.get_description();
    const auto fallback = option.get_default_str();
    // The descriptions of these say what it is: it depends on the installation, pages are for all.
    const bool isOfInstallation = fallback.rfind('/', 0) == 0 || fallback == usualAgent();
    entry.fallback = isOfInstallation || entry.value.empty() ? "" : fallback;
    entry.takesFile = entry.value == "FILE" || entry.value == "PATH";
    entry.required = option.get_required();
    entry.repeated = option.get_items_expected_max() > kMany;
    return entry;
}

/// The part of a help text behind `title`, up to an empty line.
std::string part(const std::string& text, const std::string& title)
{
    const auto at = text.find(title);
    if (at == std::string::npos) {
        return {};
    }
    const auto begin = at + title.size();
    return text.substr(begin, text.find("\n\n", begin) - begin);
}

std::string withoutIndent(const std::string& text)
{
    std::string joined;
    for (const auto& line : split(text, '\n')) {
        joined += (joined.empty() ? "" : "\n") +
                  line.substr(std::min(line.find_first_not_of(' '), line.size()));
    }
    return joined;
}

void readFooter(const std::string& footer, CommandEntry& entry)
{
    entry.exitStatus = withoutIndent(part(footer, kExitStatusTitle));
    const auto examples = withoutIndent(part(footer, kExamplesTitle));
    entry.examples = examples.empty() ? std::vector<std::string>() : split(examples, '\n');
    const auto end = std::min(footer.find(kExitStatusTitle), footer.find(kExamplesTitle));
    entry.details = footer.substr(0, end);
    while (!entry.details.empty() && entry.details.back() == '\n') {
        entry.details.pop_back();
    }
}

}  // namespace

// NOLINTNEXTLINE(misc-no-recursion): as deep as commands stand in each other
CommandEntry commandTree(const CLI::App& app, const std::string& parentPath)
{
    CommandEntry entry;
    entry.name = app.get_name();
    entry.path = parentPath.empty() ? entry.name : parentPath + " " + entry.name;
    entry.description = app.get_description();
    readFooter(app.get_footer(), entry);
    for (const auto* option : app.get_options(nullptr)) {
        const bool isArgument = option->get_snames().empty() && option->get_lnames().empty();
        (isArgument ? entry.arguments : entry.options).push_back(entryOf(*option));
    }
    for (const auto* command : app.get_subcommands(nullptr)) {
        entry.commands.push_back(commandTree(*command, entry.path));
    }
    return entry;
}

// NOLINTNEXTLINE(misc-no-recursion): the same
std::vector<const CommandEntry*> allCommands(const CommandEntry& entry)
{
    std::vector<const CommandEntry*> all = {&entry};
    for (const auto& command : entry.commands) {
        const auto below = allCommands(command);
        all.insert(all.end(), below.begin(), below.end());
    }
    return all;
}

}  // namespace talvik::ctl
