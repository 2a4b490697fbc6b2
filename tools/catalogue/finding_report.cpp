#include "tools/catalogue/finding_report.h"

#include "tools/folded_text.h"
#include "tools/safe_text.h"

#include <json/json.h>

#include <ostream>

namespace talvik::ctl {

namespace {

std::string counted(std::size_t count, const std::string& noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

Json::Value asJson(const Finding& finding)
{
    Json::Value json;
    json["code"] = finding.kind.code;
    json["severity"] = nameOf(finding.kind.severity);
    json["file"] = validUtf8(finding.place.file);
    json["line"] = static_cast<Json::UInt64>(finding.place.line);
    json["column"] = static_cast<Json::UInt64>(finding.place.column);
    json["message"] = validUtf8(finding.message);
    json["advice"] = validUtf8(finding.advice);
    return json;
}

}  // namespace

void printFindings(std::ostream& out, const CheckedFiles& files, const CheckResult& result,
                   const TableStyle& style)
{
    constexpr std::size_t kIndent = 4;
    const auto& findings = result.findings;
    for (const auto& finding : findings.list()) {
        const auto& place = finding.place;
        const auto where = printable(place.file) + ":" + std::to_string(place.line) + ":" +
                           std::to_string(place.column) + ": ";
        out << foldedText(where + nameOf(finding.kind.severity) + ": " +
                              printable(finding.message) + " [" + finding.kind.code + "]",
                          style, kIndent)
            << foldedText("    to do: " + printable(finding.advice), style, kIndent);
    }
    auto summary = counted(result.alarms, "alarm");
    if (!files.enumerations.empty()) {
        summary += ", " + counted(result.enumerations, "enumeration");
    }
    out << foldedText(summary + ": " + counted(findings.count(Severity::Error), "error") + ", " +
                          counted(findings.count(Severity::Warning), "warning") + ", " +
                          counted(findings.count(Severity::Note), "note"),
                      style, kIndent);
}

void printFindingsAsJson(std::ostream& out, const CheckedFiles& files, const CheckResult& result)
{
    Json::Value root;
    root["definitions"] = validUtf8(files.definitions);
    root["alarms"] = static_cast<Json::UInt64>(result.alarms);
    if (!files.enumerations.empty()) {
        root["enumerationFile"] = validUtf8(files.enumerations);
        root["enumerations"] = static_cast<Json::UInt64>(result.enumerations);
    }
    root["errors"] = static_cast<Json::UInt64>(result.findings.count(Severity::Error));
    root["warnings"] = static_cast<Json::UInt64>(result.findings.count(Severity::Warning));
    root["notes"] = static_cast<Json::UInt64>(result.findings.count(Severity::Note));
    root["findings"] = Json::Value(Json::arrayValue);
    for (const auto& finding : result.findings.list()) {
        root["findings"].append(asJson(finding));
    }
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "  ";
    writer["emitUTF8"] = true;
    out << Json::writeString(writer, root) << '\n';
}

}  // namespace talvik::ctl
