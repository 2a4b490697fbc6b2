#include "tools/trap_import_file.h"

#include "host/platform/destination_address.h"
#include "host/platform/trap_rules.h"
#include "host/platform/trap_store.h"
#include "tools/strict_json.h"
#include "tools/trap_import_element.h"
#include "tools/trap_names.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

namespace talvik::ctl {

namespace {

constexpr const char* kVersionsAllowed = "expected v1, v2c or v3";
constexpr const char* kTypesAllowed = "expected alarm, no-alarm, alarm-legacy or alarm-own-oid";

std::string readAddress(const TrapListElement& element)
{
    constexpr const char* kAllowed = "expected an IPv4 or IPv6 address other than 0.0.0.0 and ::, "
                                     "or a host name";
    auto address = element.text(kAllowed);
    if (destinationKind(address) == DestinationKind::None) {
        element.refuse("\"" + address + "\" is no address of a receiver; " + kAllowed);
    }
    return address;
}

std::string readUser(const TrapListElement& element)
{
    constexpr const char* kAllowed =
        "expected 1 to 32 octets without control characters, or -- for none";
    auto user = element.text(kAllowed);
    if (!trap_rules::isUser(user)) {
        element.refuse("\"" + user + "\" is no user name; " + kAllowed);
    }
    return user;
}

/// Reads a value that stands there by name, by code, or both.
std::optional<std::uint32_t> readCoded(const TrapListElement& destination, const char* member,
                                       std::optional<std::uint32_t> (*codeOf)(const std::string&),
                                       bool (*isAllowed)(unsigned int), const char* allowed)
{
    std::optional<std::uint32_t> code;
    if (destination.has(member)) {
        const auto element = destination.at(member);
        const auto name = element.text(allowed);
        code = codeOf(name);
        if (!code || !isAllowed(*code)) {
            element.refuse("\"" + name + "\" is not known; " + allowed);
        }
    }
    const auto codeMember = std::string(member) + "Code";
    if (!destination.has(codeMember)) {
        return code;
    }
    const auto element = destination.at(codeMember);
    const auto number = element.number(kMaxTrapIndex);
    if (!isAllowed(number)) {
        element.refuse(std::to_string(number) + " is not known; " + allowed + " as " + member +
                       ", or its number");
    }
    if (code && *code != number) {
        element.refuse(std::to_string(number) + " does not agree with \"" + member +
                       "\", which is " + std::to_string(*code) + "; leave one of them out");
    }
    return number;
}

void expectUsable(const TrapListElement& destination)
{
    if (destination.has("usable") && !destination.at("usable").isNull()) {
        destination.at("usable").text("expected null or an address, which is not looked at");
    }
}

TrapDestination readDestination(const TrapListElement& element)
{
    TrapDestination destination;
    destination.port = kUsualTrapPort;
    if (element.isText()) {
        destination.address = readAddress(element);
        return destination;
    }
    if (!element.isObject()) {
        element.refuse("expected an object with the member \"address\", or an address as a text");
    }
    element.expectMembers({"address", "index", "port", "type", "typeCode", "usable", "user",
                           "version", "versionCode"});
    if (!element.has("address")) {
        element.refuse("lacks the member \"address\"");
    }
    destination.address = readAddress(element.at("address"));
    if (element.has("port")) {
        destination.port = element.at("port").number(65535);
    }
    if (element.has("index")) {
        destination.index = element.at("index").number(kMaxTrapIndex);
    }
    destination.version =
        readCoded(element, "version", trapVersionCode, trap_rules::isVersion, kVersionsAllowed);
    destination.type = readCoded(element, "type", trapTypeCode, trap_rules::isType, kTypesAllowed);
    if (element.has("user")) {
        destination.user = readUser(element.at("user"));
    }
    expectUsable(element);
    return destination;
}

/// The array of destinations within the list.
TrapListElement destinationsOf(const TrapListElement& top)
{
    if (top.isArray()) {
        return top;
    }
    if (!top.isObject() || !top.has("destinations")) {
        top.refuse("expected an array of destinations, or an object with the member "
                   "\"destinations\" as talvikctl trap list --json prints it");
    }
    top.expectMembers({"agent", "destinations"});
    if (top.has("agent")) {
        top.at("agent").text("expected the address of the agent that the list is from");
    }
    return top.at("destinations");
}

/// Refuses what stands in the list already.
class Repeats {
public:
    void expectNew(const TrapListElement& element, const TrapDestination& destination)
    {
        const auto key = receiverKey(*destination.address, *destination.port);
        const bool hasIndex = destination.index != 0;
        const auto [first, isNew] = receivers_.emplace(key, First{element.place(), hasIndex});
        if (!isNew && !(hasIndex && first->second.hasIndex)) {
            element.refuse(
                "has the address and port of " + first->second.place +
                "; a receiver may stand there several times only with the index of each");
        }
        if (destination.index == 0) {
            return;
        }
        const auto index = indexes_.emplace(destination.index, element.place());
        if (!index.second) {
            element.at("index").refuse(std::to_string(destination.index) + " is the index of " +
                                       index.first->second +
                                       " already; give another one, or none for a free one");
        }
    }

private:
    struct First {
        std::string place;
        bool hasIndex;
    };

    std::map<std::string, First> receivers_;        // the first of each key
    std::map<std::uint32_t, std::string> indexes_;  // places by index
};

std::string contentOf(std::istream& in, const std::string& name)
{
    std::string content(kMaxTrapListBytes + 1, '\0');
    in.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(in.gcount()));
    if (in.bad()) {
        refuseTrapList(name, "cannot be read to its end");
    }
    if (content.size() > kMaxTrapListBytes) {
        refuseTrapList(name, "is larger than " + std::to_string(kMaxTrapListBytes >> 20U) +
                                 " MiB, which no list of receivers needs");
    }
    return content;
}

std::string contentOf(const std::string& file)
{
    errno = 0;
    std::ifstream in(file, std::ios::binary);
    std::error_code ignored;
    if (!in || std::filesystem::is_directory(file, ignored)) {
        const int error = errno == 0 ? EISDIR : errno;
        refuseTrapList(file, "cannot be read: " + std::generic_category().message(error));
    }
    return contentOf(in, file);
}

/// The usual form of an IP address; a name in small letters without a dot at its end.
std::string usualForm(const std::string& address)
{
    char form[INET6_ADDRSTRLEN] = {};
    in6_addr ipv6{};
    const auto percent = std::min(address.find('%'), address.size());
    if (inet_pton(AF_INET6, address.substr(0, percent).c_str(), &ipv6) == 1 &&
        inet_ntop(AF_INET6, &ipv6, form, sizeof(form)) != nullptr) {
        return form + address.substr(percent);
    }
    auto name = address;
    std::transform(name.begin(), name.end(), name.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    if (!name.empty() && name.back() == '.') {
        name.pop_back();
    }
    return name;
}

}  // namespace

std::string receiverKey(const std::string& address, std::uint32_t port)
{
    return usualForm(address) + " " + std::to_string(port);
}

std::vector<TrapDestination> parseTrapList(const std::string& text, const std::string& name)
{
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
        refuseTrapList(name, "is empty");
    }
    std::string refusal;
    const auto document = strictJson(text, refusal);
    if (!document) {
        refuseTrapList(name, "is no JSON: " + refusal);
    }
    const TrapListSource source{text, name};
    const auto list = destinationsOf(TrapListElement(*document, source, ""));
    if (list.isArray() && list.size() > TrapStore::kMaxDestinations) {
        refuseTrapList(name, "has " + std::to_string(list.size()) +
                                 " destinations; an agent has room for " +
                                 std::to_string(TrapStore::kMaxDestinations));
    }
    const auto elements = list.list();
    std::vector<TrapDestination> destinations;
    Repeats repeats;
    for (const auto& element : elements) {
        destinations.push_back(readDestination(element));
        repeats.expectNew(element, destinations.back());
    }
    return destinations;
}

std::string trapListName(const std::string& file)
{
    return file == "-" ? "standard input" : file;
}

std::vector<TrapDestination> loadTrapList(const std::string& file)
{
    const auto name = trapListName(file);
    return parseTrapList(file == "-" ? contentOf(std::cin, name) : contentOf(file), name);
}

}  // namespace talvik::ctl
