#include "host/snmp/mib_element.h"

#include "host/startup_error.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace talvik {

namespace {

std::string titleOf(const std::string& file)
{
    return "MIB description " + file;
}

}  // namespace

MibElement::MibElement(const Json::Value& document, const std::string& file)
    : JsonPlace(document, titleOf(file))
{
}

std::vector<MibElement> MibElement::list(const char* member) const
{
    if (!has(member)) {
        at(member).refuse("expected an array");
    }
    std::vector<MibElement> elements;
    for (auto& element : JsonPlace::list(member)) {
        elements.push_back(MibElement(std::move(element)));
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
    if (!value().isObject() || value().empty()) {
        refuse("expected an object of label and number");
    }
    return value().getMemberNames();
}

std::string MibElement::asText(const std::string& expected) const
{
    if (!value().isString() || value().asString().empty()) {
        refuse(expected);
    }
    return value().asString();
}

long MibElement::asNumber(long low, long high) const
{
    if (!value().isInt64() || value().asInt64() < low || value().asInt64() > high) {
        refuse("expected a number from " + std::to_string(low) + " to " + std::to_string(high));
    }
    return value().asInt64();
}

Json::Value parseMibFile(const std::string& file)
{
    const auto title = titleOf(file);
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw StartupError(title + ": cannot be read: " + std::strerror(errno));
    }
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    return parseStrictJson(text, title);
}

}  // namespace talvik
