#include "tools/catalogue/finding_report.h"

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

void printFindings(std::ostream& out, const CheckedFiles& files, const CheckResult& result)
{
    const auto& findings = result.findings;
    for (const auto& finding : findings.list()) {
        const auto& place = finding.place;
        out << printable(place.file) << ':' << place.line << ':' << place.column << ": "
            << nameOf(finding.kind.severity) << ": " << printable(finding.message) << " ["
            << finding.kind.code << "]\n    to do: " << printable(finding.advice) << '\n';
    }
    out << counted(result.alarms, "alarm");
    if (!files.enumerations.empty()) {
        out << ", " << counted(result.enumerations, "enumeration");
    }
    out << ": " << counted(findings.count(Severity::Error), "error") << ", "
        << counted(findings.count(Severity::Warning), "warning") << ", "
        << counted(findings.count(Severity::Note), "note") << '\n';
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
