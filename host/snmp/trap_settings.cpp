#include "host/snmp/trap_settings.h"

#include "host/platform/destination_address.h"
#include "host/snmp/json_place.h"
#include "host/snmp/trap_size.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstring>
#include <set>

namespace talvik {

namespace {

constexpr std::size_t kMinPassphrase = 8;  // RFC 3414, 11.2
constexpr std::size_t kMaxPassphrase = 255;
constexpr std::size_t kMaxAddress = 255;
constexpr std::size_t kMaxUsers = 64;  // the keys of each take milliseconds

std::string oneOf(const JsonPlace& element, std::initializer_list<const char*> choices)
{
    const auto text = element.text(0, kMaxAddress);
    std::string all;
    for (const char* choice : choices) {
        if (text == choice) {
            return text;
        }
        all += (all.empty() ? "" : ", ") + std::string(choice);
    }
    element.refuse("\"" + text + "\" is none of " + all);
}

std::string textWithoutNul(const JsonPlace& element, std::size_t least, std::size_t most)
{
    auto text = element.text(least, most);
    if (text.find('\0') != std::string::npos) {
        element.refuse("a NUL cannot be part of it");
    }
    return text;
}

TrapUser readUser(const JsonPlace& element)
{
    element.expectObject({"name", "auth", "authPassphrase", "privacy", "privacyPassphrase"}, {});
    TrapUser user;
    user.name = textWithoutNul(element.at("name"), 1, kMaxUserName);
    if (user.name == "--") {
        element.at("name").refuse("\"--\" stands for no user");
    }
    user.auth = oneOf(element.at("auth"), {"SHA", "SHA-224", "SHA-256", "SHA-384", "SHA-512"});
    user.authPassphrase =
        textWithoutNul(element.at("authPassphrase"), kMinPassphrase, kMaxPassphrase);
    user.privacy = oneOf(element.at("privacy"), {"AES", "AES-192", "AES-256"});
    user.privacyPassphrase =
        textWithoutNul(element.at("privacyPassphrase"), kMinPassphrase, kMaxPassphrase);
    return user;
}

std::string readAddress(const JsonPlace& element, bool numeric)
{
    auto address = element.text(1, kMaxAddress);
    const auto kind = destinationKind(address);
    if (kind == DestinationKind::None || (numeric && kind == DestinationKind::Name)) {
        element.refuse("\"" + address + "\" is no " + (numeric ? "IP " : "") + "address" +
                       (numeric ? "" : " and no host name"));
    }
    return address;
}

ReceiverSettings readReceiver(const JsonPlace& element)
{
    element.expectObject({"address"},
                         {"port", "inform", "timeoutMs", "retries", "community", "source"});
    ReceiverSettings receiver;
    receiver.place = element.place();
    receiver.address = readAddress(element.at("address"), false);
    if (element.has("port")) {
        receiver.port = static_cast<unsigned int>(element.at("port").number(1, 65535));
    }
    if (element.has("inform")) {
        receiver.inform = element.at("inform").flag();
    }
    if (element.has("timeoutMs")) {
        receiver.timeout = std::chrono::milliseconds(element.at("timeoutMs").number(100, 60000));
    }
    if (element.has("retries")) {
        receiver.retries = element.at("retries").number(0, 10);
    }
    if (element.has("community")) {
        receiver.community = textWithoutNul(element.at("community"), 1, kMaxCommunity);
    }
    if (element.has("source")) {
        receiver.source = readAddress(element.at("source"), true);
    }
    return receiver;
}

std::string lowerCase(std::string text)
{
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return text;
}

std::vector<TrapUser> readUsers(const JsonPlace& top)
{
    std::vector<TrapUser> users;
    std::set<std::string> names;
    const auto elements = top.list("users");
    if (elements.size() > kMaxUsers) {
        top.at("users").refuse("there are " + std::to_string(elements.size()) + " users, at most " +
                               std::to_string(kMaxUsers) + " are possible");
    }
    for (const auto& element : elements) {
        users.push_back(readUser(element));
        if (!names.insert(users.back().name).second) {
            element.at("name").refuse("user \"" + users.back().name + "\" is there twice");
        }
    }
    return users;
}

std::vector<ReceiverSettings> readReceivers(const JsonPlace& top)
{
    std::vector<ReceiverSettings> receivers;
    std::set<std::pair<std::string, unsigned int>> seen;
    for (const auto& element : top.list("receivers")) {
        receivers.push_back(readReceiver(element));
        const auto& last = receivers.back();
        if (!seen.emplace(lowerCase(last.address), last.port.value_or(0)).second) {
            element.refuse("this receiver is there twice");
        }
    }
    return receivers;
}

std::array<unsigned char, 4> readIpv4(const JsonPlace& element)
{
    std::array<unsigned char, 4> octets{};
    const auto text = element.text(1, kMaxAddress);
    if (text.find('\0') != std::string::npos ||
        inet_pton(AF_INET, text.c_str(), octets.data()) != 1) {
        element.refuse("\"" + text + "\" is no IPv4 address");
    }
    return octets;
}

}  // namespace

const ReceiverSettings* TrapSettings::find(const std::string& address, unsigned int port) const
{
    const ReceiverSettings* anyPort = nullptr;
    const auto wanted = lowerCase(address);
    for (const auto& receiver : receivers) {
        if (lowerCase(receiver.address) != wanted) {
            continue;
        }
        if (receiver.port == port) {
            return &receiver;
        }
        if (!receiver.port) {
            anyPort = &receiver;
        }
    }
    return anyPort;
}

TrapSettings parseTrapSettings(const std::string& text, const std::string& file)
{
    const auto title = "trap settings " + file;
    const auto document = parseStrictJson(text, title);
    const JsonPlace top(document, title);
    top.expectObject({}, {"community", "users", "receivers", "v1AgentAddress"});
    TrapSettings settings;
    if (top.has("community")) {
        settings.community = textWithoutNul(top.at("community"), 1, kMaxCommunity);
    }
    settings.users = readUsers(top);
    settings.receivers = readReceivers(top);
    if (top.has("v1AgentAddress")) {
        settings.v1AgentAddress = readIpv4(top.at("v1AgentAddress"));
    }
    return settings;
}

void wipe(std::string& secret)
{
    explicit_bzero(secret.data(), secret.size());
    secret.clear();
}

}  // namespace talvik
