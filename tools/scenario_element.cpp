#include "tools/scenario_element.h"

#include "host/startup_error.h"
#include "tools/safe_text.h"
#include "tools/strict_json.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <utility>

namespace talvik::ctl {

namespace {

[[noreturn]] void refuseFile(const std::string& file, const std::string& reason)
{
    throw StartupError(printable("scenario " + file + ": " + reason));
}

}  // namespace

void ScenarioElement::refuse(const std::string& reason) const
{
    refuseFile(file_ + (place_.empty() ? "" : ", " + place_), reason);
}

void ScenarioElement::expectObject(std::initializer_list<const char*> required,
                                   std::initializer_list<const char*> optional) const
{
    if (!value_.isObject()) {
        refuse("expected an object");
    }
    for (const auto* name : required) {
        if (!value_.isMember(name)) {
            refuse("lacks the member \"" + std::string(name) + "\"");
        }
    }
    for (const auto& name : value_.getMemberNames()) {
        if (std::find(required.begin(), required.end(), name) == required.end() &&
            std::find(optional.begin(), optional.end(), name) == optional.end()) {
            refuse("unknown member \"" + name + "\"");
        }
    }
}

std::string ScenarioElement::onlyMember() const
{
    if (!value_.isObject() || value_.size() != 1) {
        refuse("expected an object with one member: raise, event, clear, pauseMs or repeat");
    }
    return value_.getMemberNames().front();
}

ScenarioElement ScenarioElement::at(const std::string& member) const
{
    return {value_[member], file_, place_.empty() ? member : place_ + "." + member};
}

std::vector<ScenarioElement> ScenarioElement::list() const
{
    if (!value_.isArray()) {
        refuse("expected an array");
    }
    std::vector<ScenarioElement> elements;
    for (Json::ArrayIndex i = 0; i < value_.size(); ++i) {
        elements.emplace_back(value_[i], file_, place_ + "[" + std::to_string(i) + "]");
    }
    return elements;
}

std::string ScenarioElement::text() const
{
    if (!value_.isString()) {
        refuse("expected a text");
    }
    return value_.asString();
}

std::uint64_t ScenarioElement::number(std::uint64_t least, std::uint64_t most) const
{
    if (!value_.isUInt64() || value_.asUInt64() < least || value_.asUInt64() > most) {
        refuse("expected a number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return value_.asUInt64();
}

std::string ScenarioElement::textOrNumber() const
{
    return value_.isUInt64() ? std::to_string(value_.asUInt64()) : text();
}

Json::Value parseScenarioFile(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    if (!stream || !(text << stream.rdbuf())) {
        const int error = errno;
        refuseFile(file, std::string("cannot be read: ") +
                             (error == 0 ? "it is empty" : std::strerror(error)));
    }
    std::string refusal;
    auto document = strictJson(text.str(), refusal);
    if (!document) {
        refuseFile(file, refusal);
    }
    return std::move(*document);
}

}  // namespace talvik::ctl
