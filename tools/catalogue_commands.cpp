#include "host/installation_paths.h"
#include "tools/catalogue/catalogue_check.h"
#include "tools/catalogue/expansion.h"
#include "tools/catalogue/finding_report.h"
#include "tools/catalogue/json_document.h"
#include "tools/command_line.h"
#include "tools/folded_text.h"
#include "tools/progress.h"
#include "tools/safe_text.h"

#include <CLI/CLI.hpp>
#include <json/json.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace talvik::ctl {

namespace {

struct CheckOptions {
    CheckedFiles files;
    std::string failOn = "warning";
    OutputOptions output;
};

struct ExpandOptions {
    std::string id;
    std::string params;
    std::string definitions;
    std::string enumerations;
    OutputOptions output;
};

const std::map<std::string, Severity> kSeverities = {
    {"error", Severity::Error}, {"warning", Severity::Warning}, {"note", Severity::Note}};

std::string refusalOfSeverity(const std::string& text)
{
    return kSeverities.count(text) == 0 ? "use error, warning or note" : "";
}

std::optional<std::uint64_t> idIn(const std::string& text)
{
    std::uint64_t id = 0;
    const auto* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, id);
    return read.ec == std::errc() && read.ptr == end ? std::make_optional(id) : std::nullopt;
}

std::string refusalOfId(const std::string& text)
{
    return idIn(text) ? "" : "an id is decimal digits, up to 18446744073709551615";
}

int runCheck(const CheckOptions& options)
{
    std::optional<Progress::Span> span(std::in_place, "checking " + options.files.definitions);
    const auto definitions = JsonDocument::load(options.files.definitions);
    std::optional<JsonDocument> enumerations;
    if (!options.files.enumerations.empty()) {
        enumerations = JsonDocument::load(options.files.enumerations);
    }
    const auto result = checkCatalogue(definitions, enumerations ? &*enumerations : nullptr);
    span.reset();
    if (options.output.json) {
        printFindingsAsJson(std::cout, options.files, result);
    } else {
        printFindings(std::cout, options.files, result, tableStyle(options.output));
    }
    const auto& findings = result.findings.list();
    const auto least = kSeverities.at(options.failOn);
    const bool bad = std::any_of(findings.begin(), findings.end(),
                                 [least](const auto& each) { return each.kind.severity >= least; });
    return bad ? kExitBad : kExitGood;
}

const char* levelOf(const ModuleLog::Line& line)
{
    return line.isError ? "error" : "warning";
}

void printAsJson(const Expansion& expansion)
{
    Json::Value root;
    root["id"] = std::to_string(expansion.id);
    root["shown"] = expansion.shown;
    if (expansion.shown) {
        root["trapAlarmId"] = expansion.shownId;
        root["name"] = validUtf8(expansion.name);
        root["location"] = validUtf8(expansion.location);
        root["detail"] = validUtf8(expansion.detail);
        root["suggestion"] = validUtf8(expansion.suggestion);
    }
    root["log"] = Json::Value(Json::arrayValue);
    for (const auto& line : expansion.log) {
        Json::Value entry;
        entry["level"] = levelOf(line);
        entry["text"] = validUtf8(line.text);
        root["log"].append(entry);
    }
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "  ";
    writer["emitUTF8"] = true;
    std::cout << Json::writeString(writer, root) << '\n';
}

void printTexts(const Expansion& expansion, const TableStyle& style)
{
    constexpr std::size_t kIndent = 4;
    if (expansion.shown) {
        std::cout << namedValue("name", printable(expansion.name), style)
                  << namedValue("location", printable(expansion.location), style)
                  << namedValue("detail", printable(expansion.detail), style)
                  << namedValue("suggestion", printable(expansion.suggestion), style);
    } else {
        std::cout << foldedText(
            "The module does not show alarm " + std::to_string(expansion.id) + ".", style, kIndent);
    }
    for (const auto& line : expansion.log) {
        std::cout << foldedText(std::string("the module logs a") + (line.isError ? "n " : " ") +
                                    levelOf(line) + ": " + printable(line.text),
                                style, kIndent);
    }
}

int runExpand(const ExpandOptions& options)
{
    const auto expansion =
        expandAlarm(options.definitions, options.enumerations, *idIn(options.id), options.params);
    if (options.output.json) {
        printAsJson(expansion);
    } else {
        printTexts(expansion, tableStyle(options.output));
    }
    return expansion.shown ? kExitGood : kExitBad;
}

void addCheck(CLI::App& catalogue, Action& action)
{
    auto options = std::make_shared<CheckOptions>();
    auto* check =
        catalogue.add_subcommand("check", "Tell what the module will do with a catalogue");
    check->add_option("FILE", options->files.definitions, "Alarm definitions")
        ->type_name("FILE")
        ->required();
    check->add_option("--enums", options->files.enumerations, "Enumerations of parameters")
        ->type_name("FILE");
    check->add_option("--fail-on", options->failOn, "Least severity that makes the exit status 1")
        ->type_name("error|warning|note")
        ->check(CLI::Validator(refusalOfSeverity, ""))
        ->capture_default_str();
    addOutputOptions(*check, options->output);
    setHelp(
        *check,
        {"Each finding names FILE:LINE:COLUMN; columns count characters from 1. Without\n"
         "--enums, what depends on the enumerations is not looked at.",
         "0 nothing found but notes, 1 errors or warnings, 2 wrong usage or an unreadable file.",
         {"talvikctl catalogue check alarms.json",
          "talvikctl catalogue check alarms.json --enums enums.json --fail-on error"}});
    onCommand(*check, action, options->output, [options] { return runCheck(*options); });
}

void addExpand(CLI::App& catalogue, Action& action)
{
    auto options = std::make_shared<ExpandOptions>();
    const auto paths = InstallationPaths::ofThisProgram();
    options->definitions = paths.configFile("alarm-definitions.json");
    options->enumerations = paths.configFile("alarm-enumerations.json");
    auto* expand =
        catalogue.add_subcommand("expand", "Print the texts of an alarm as the module shows them");
    expand->add_option("ID", options->id, "The alarm's id in decimal digits")
        ->check(CLI::Validator(refusalOfId, ""))
        ->required();
    expand->add_option("PARAMS", options->params, "Its values, joined by commas");
    expand->add_option("--definitions", options->definitions, "Alarm definitions")
        ->type_name("FILE")
        ->capture_default_str();
    expand->add_option("--enums", options->enumerations, "Enumerations of parameters")
        ->type_name("FILE")
        ->capture_default_str();
    addOutputOptions(*expand, options->output);
    setHelp(
        *expand,
        {"In PARAMS, &#44; stands for a comma and &#38; for an ampersand; write -- before\n"
         "ID if PARAMS begins with a hyphen.",
         "0 the alarm is shown, 1 the module does not show it, 2 wrong usage or a file that the\n"
         "module cannot load.",
         {"talvikctl catalogue expand 501010001 DAE000,7,2102350TLV"}});
    onCommand(*expand, action, options->output, [options] { return runExpand(*options); });
}

}  // namespace

void addCatalogueCommands(CLI::App& talvikctl, Action& action)
{
    auto* catalogue = talvikctl.add_subcommand("catalogue", "The alarm catalogue");
    catalogue->require_subcommand(1);
    setHelp(*catalogue, {"", "", {"talvikctl catalogue check alarms.json"}});
    addCheck(*catalogue, action);
    addExpand(*catalogue, action);
}

}  // namespace talvik::ctl
