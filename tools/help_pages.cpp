#include "tools/help_pages.h"

#include <algorithm>
#include <cctype>

namespace talvik::ctl {

namespace {

std::string withValue(const std::string& name, const OptionEntry& option)
{
    return option.value.empty() ? name : name + " " + option.value;
}

std::string namesOf(const OptionEntry& option)
{
    std::string text;
    for (const auto& name : option.names) {
        text += (text.empty() ? "" : ", ") + withValue(name, option);
    }
    return text;
}

std::string meaningOf(const OptionEntry& option)
{
    auto text = option.description;
    if (option.required) {
        text += "; required";
    }
    if (option.repeated) {
        text += "; several are possible";
    }
    return option.fallback.empty() ? text : text + " (default: " + option.fallback + ")";
}

std::string usageOf(const CommandEntry& command)
{
    auto text = command.path + (command.options.empty() ? "" : " [OPTIONS]");
    for (const auto& argument : command.arguments) {
        const auto word = argument.names.front() + (argument.repeated ? "..." : "");
        text += argument.required ? " " + word : " [" + word + "]";
    }
    return command.commands.empty() ? text : text + " COMMAND";
}

// man(7)

/// A text in which nothing is a request or an escape.
std::string roff(const std::string& text)
{
    std::string out;
    bool lineBegins = true;
    for (const char c : text) {
        if (lineBegins && (c == '.' || c == '\'')) {
            out += "\\&";
        }
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-') {
            out += "\\-";
        } else {
            out += c;
        }
        lineBegins = c == '\n';
    }
    return out;
}

std::string verbatim(const std::string& text)
{
    return ".PP\n.nf\n" + roff(text) + "\n.fi\n";
}

std::string roffOptions(const std::vector<OptionEntry>& options)
{
    std::string text;
    for (const auto& option : options) {
        text += ".TP\n.B " + roff(namesOf(option)) + "\n" + roff(meaningOf(option)) + "\n";
    }
    return text;
}

std::string lines(const std::vector<std::string>& texts)
{
    std::string all;
    for (const auto& text : texts) {
        all += (all.empty() ? "" : "\n") + text;
    }
    return all;
}

std::string roffCommand(const CommandEntry& command)
{
    std::string text = ".SS " + roff(usageOf(command)) + "\n" + roff(command.description) + ".\n" +
                       roffOptions(command.arguments) + roffOptions(command.options);
    if (!command.details.empty()) {
        text += verbatim(command.details);
    }
    if (!command.exitStatus.empty()) {
        text += ".PP\nExit status: " + roff(command.exitStatus) + "\n";
    }
    return text + verbatim(lines(command.examples));
}

// Markdown

std::string inTable(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        out += c == '|' ? std::string("\\|") : std::string(1, c);
    }
    return out;
}

std::string markdownOptions(const CommandEntry& command)
{
    if (command.arguments.empty() && command.options.empty()) {
        return {};
    }
    std::string text = "\n| Option | Meaning |\n|---|---|\n";
    for (const auto* options : {&command.arguments, &command.options}) {
        for (const auto& option : *options) {
            const auto name =
                options == &command.arguments ? option.names.front() : namesOf(option);
            text += "| `" + inTable(name) + "` | " + inTable(meaningOf(option)) + " |\n";
        }
    }
    return text;
}

std::string markdownCommand(const CommandEntry& command)
{
    auto text = "### " + command.path + "\n\n" + command.description + ".\n\n    " +
                usageOf(command) + "\n" + markdownOptions(command);
    if (!command.details.empty()) {
        text += "\n```\n" + command.details + "\n```\n";
    }
    if (!command.exitStatus.empty()) {
        text += "\nExit status: " + command.exitStatus + "\n";
    }
    text += "\nExamples:\n\n";
    for (const auto& example : command.examples) {
        text += "    " + example + "\n";
    }
    return text;
}

Json::Value jsonOf(const std::vector<std::string>& texts)
{
    Json::Value list(Json::arrayValue);
    for (const auto& text : texts) {
        list.append(text);
    }
    return list;
}

Json::Value jsonOf(const std::vector<OptionEntry>& options)
{
    Json::Value list(Json::arrayValue);
    for (const auto& option : options) {
        Json::Value value;
        value["names"] = jsonOf(option.names);
        value["value"] = option.value;
        value["choices"] = jsonOf(option.choices);
        value["description"] = option.description;
        value["default"] = option.fallback;
        value["takesFile"] = option.takesFile;
        value["required"] = option.required;
        value["repeated"] = option.repeated;
        list.append(value);
    }
    return list;
}

const std::string kManualEnd = R"(.SH FILES
.TP
.I /var/lib/talvik/agent.sock
The socket of the system's agent; only root and the user talvik may connect.
.TP
.IR /etc/snmp/snmp.conf ", " ~/.snmp/snmp.conf
Users, passphrases and communities for what is asked through SNMP.
.SH SEE ALSO
.BR talvik-agentd (8),
.BR talvik-backendd (8),
.BR snmp.conf (5),
.I /usr/share/doc/talvik-agent/guide/
)";

}  // namespace

std::string manualPage(const CommandEntry& command)
{
    std::string title = command.path;
    std::transform(title.begin(), title.end(), title.begin(), [](unsigned char c) {
        return c == ' ' ? '-' : static_cast<char>(std::toupper(c));
    });
    auto text = ".TH " + roff(title) + " 1 \"\" talvik \"User commands\"\n.SH NAME\n" +
                roff(command.path) + " \\- " + roff(command.description) + "\n.SH SYNOPSIS\n.B " +
                roff(usageOf(command)) + "\n.SH COMMANDS\n";
    for (const auto* each : allCommands(command)) {
        text += roffCommand(*each);
    }
    return text + kManualEnd;
}

std::string markdownPage(const CommandEntry& command)
{
    std::string text;
    for (const auto* each : allCommands(command)) {
        text += (text.empty() ? "" : "\n") + markdownCommand(*each);
    }
    return text;
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as commands stand in each other
Json::Value helpJson(const CommandEntry& command)
{
    Json::Value value;
    value["name"] = command.name;
    value["path"] = command.path;
    value["description"] = command.description;
    value["details"] = command.details;
    value["exitStatus"] = command.exitStatus;
    value["examples"] = jsonOf(command.examples);
    value["arguments"] = jsonOf(command.arguments);
    value["options"] = jsonOf(command.options);
    value["commands"] = Json::Value(Json::arrayValue);
    for (const auto& below : command.commands) {
        value["commands"].append(helpJson(below));
    }
    return value;
}

}  // namespace talvik::ctl
