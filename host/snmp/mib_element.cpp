#include "host/snmp/mib_element.h"

#include "host/startup_error.h"

#include <json/reader.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

namespace talvik {

namespace {

/// The rules of strict JSON; duplicate members are refused too.
Json::CharReaderBuilder strictReader()
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    return builder;
}

/// JsonCpp reports over several lines; a log line and a terminal want one.
std::string joinLines(const std::string& text)
{
    std::string joined;
    for (const char c : text) {
        const bool blank = c == '\n' || c == ' ' || c == '*';
        if (!blank) {
            joined += c;
        } else if (!joined.empty() && joined.back() != ' ') {
            joined += ' ';
        }
    }
    while (!joined.empty() && joined.back() == ' ') {
        joined.pop_back();
    }
    return joined;
}

}  // namespace

void MibElement::refuse(const std::string& reason) const
{
    throw StartupError("MIB description " + file_ + (place_.empty() ? "" : ", " + place_) + ": " +
                       reason);
}

void MibElement::expectObject(std::initializer_list<const char*> required,
                              std::initializer_list<const char*> optional) const
{
    if (!value_.isObject()) {
        refuse("expected an object");
    }
    for (const char* name : required) {
        if (!value_.isMember(name)) {
            refuse("lacks the member \"" + std::string(name) + "\"");
        }
    }
    const auto isKnown = [&](const std::string& name) {
        return std::find(required.begin(), required.end(), name) != required.end() ||
               std::find(optional.begin(), optional.end(), name) != optional.end();
    };
    for (const auto& name : value_.getMemberNames()) {
        if (!isKnown(name)) {
            refuse("unknown member \"" + name + "\"");
        }
    }
}

MibElement MibElement::at(const std::string& member) const
{
    return {value_[member], file_, place_.empty() ? member : place_ + "." + member};
}

std::vector<MibElement> MibElement::list(const char* member) const
{
    const auto all = at(member);
    if (!all.value_.isArray()) {
        all.refuse("expected an array");
    }
    std::vector<MibElement> elements;
    for (Json::ArrayIndex i = 0; i < all.value_.size(); ++i) {
        elements.push_back(
            MibElement(all.value_[i], file_, all.place_ + "[" + std::to_string(i) + "]"));
    }
    return elements;
}

std::string MibElement::text(const char* member) const
{
    return at(member).asText("expected a text that is not empty");
}

long MibElement::number(const std::string& member, long low, long high) const
{
    return at(member).asNumber(low, high);
}

bool MibElement::flag(const char* member) const
{
    const auto element = at(member);
    if (!element.value_.isBool()) {
        element.refuse("expected true or false");
    }
    return element.value_.asBool();
}

ObjectId MibElement::objectId(const char* member) const
{
    const auto written = text(member);
    auto id = parseObjectId(written);
    if (!id) {
        at(member).refuse("\"" + written +
                          "\" is no object identifier (dotted decimal, no dot in front)");
    }
    return *id;
}

std::vector<std::string> MibElement::memberNames() const
{
    if (!value_.isObject() || value_.empty()) {
        refuse("expected an object of label and number");
    }
    return value_.getMemberNames();
}

std::string MibElement::asText(const std::string& expected) const
{
    if (!value_.isString() || value_.asString().empty()) {
        refuse(expected);
    }
    return value_.asString();
}

long MibElement::asNumber(long low, long high) const
{
    if (!value_.isInt64() || value_.asInt64() < low || value_.asInt64() > high) {
        refuse("expected a number from " + std::to_string(low) + " to " + std::to_string(high));
    }
    return value_.asInt64();
}

Json::Value parseMibFile(const std::string& file)
{
    Json::Value document;
    const MibElement top(document, file);
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        top.refuse(std::string("cannot be read: ") + std::strerror(errno));
    }
    std::string errors;
    try {
        if (!Json::parseFromStream(strictReader(), stream, &document, &errors)) {
            top.refuse(joinLines(errors));
        }
    } catch (const Json::Exception& error) {  // nesting beyond the reader's limit
        top.refuse(joinLines(error.what()));
    }
    return document;
}

}  // namespace talvik
