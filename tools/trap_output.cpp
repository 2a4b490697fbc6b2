#include "tools/trap_output.h"

#include "tools/safe_text.h"
#include "tools/trap_names.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace talvik::ctl {

namespace {

constexpr const char* kNotShown = "?";

const Columns kCuttable = {{1}, {5}, {6}};  // address, user, usable

std::string shown(const std::optional<std::string>& text)
{
    return text ? printable(*text) : kNotShown;
}

std::string shownCode(const std::optional<std::uint32_t>& code, std::string (*name)(std::uint32_t))
{
    return code ? name(*code) : kNotShown;
}

std::string shownUsable(const std::optional<std::string>& usable)
{
    return usable == kUnresolved ? "does not resolve" : shown(usable);
}

TableLine lineOf(const TrapDestination& row)
{
    return {std::to_string(row.index),
            shown(row.address),
            row.port ? std::to_string(*row.port) : kNotShown,
            shownCode(row.version, trapVersionName),
            shownCode(row.type, trapTypeName),
            shown(row.user),
            {shownUsable(row.usable), row.usable == kUnresolved ? Tone::Warning : Tone::Plain}};
}

Json::Value jsonOf(const std::optional<std::string>& text)
{
    return text ? Json::Value(validUtf8(*text)) : Json::Value();
}

Json::Value jsonOf(const std::optional<std::uint32_t>& number)
{
    return number ? Json::Value(*number) : Json::Value();
}

Json::Value jsonName(const std::optional<std::uint32_t>& code, std::string (*name)(std::uint32_t))
{
    return code ? Json::Value(name(*code)) : Json::Value();
}

}  // namespace

std::string trapTableText(const std::vector<TrapDestination>& destinations, const TableStyle& style)
{
    if (destinations.empty()) {
        return "no trap destinations\n";
    }
    std::vector<TableLine> lines = {
        {"INDEX", "ADDRESS", "PORT", "VERSION", "TYPE", "USER", "USABLE"}};
    std::transform(destinations.begin(), destinations.end(), std::back_inserter(lines), lineOf);
    return alignedTable(lines, style, kCuttable);
}

Json::Value trapJson(const TrapDestination& row)
{
    Json::Value value;
    value["index"] = row.index;
    value["address"] = jsonOf(row.address);
    value["port"] = jsonOf(row.port);
    value["version"] = jsonName(row.version, trapVersionName);
    value["versionCode"] = jsonOf(row.version);
    value["type"] = jsonName(row.type, trapTypeName);
    value["typeCode"] = jsonOf(row.type);
    value["user"] = jsonOf(row.user);
    value["usable"] = row.usable == kUnresolved ? Json::Value() : jsonOf(row.usable);
    return value;
}

Json::Value trapTableJson(const std::string& agent,
                          const std::vector<TrapDestination>& destinations)
{
    Json::Value root;
    root["agent"] = validUtf8(agent);
    root["destinations"] = Json::Value(Json::arrayValue);
    for (const auto& row : destinations) {
        root["destinations"].append(trapJson(row));
    }
    return root;
}

Json::Value failureJson(const Failure& failure)
{
    Json::Value value;
    value["reason"] = validUtf8(failure.what());
    value["advice"] = validUtf8(failure.advice());
    return value;
}

std::string failureText(const Failure& failure)
{
    return "talvikctl: " + printable(failure.what()) + "; " + printable(failure.advice()) + "\n";
}

std::string jsonText(const Json::Value& value)
{
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "  ";
    return Json::writeString(writer, value) + "\n";
}

std::string jsonLine(const Json::Value& value)
{
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    return Json::writeString(writer, value) + "\n";
}

}  // namespace talvik::ctl
