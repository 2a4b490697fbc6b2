#include "host/snmp/engine_state.h"

#include "host/platform/host_log.h"
#include "host/snmp/durable_file.h"
#include "host/startup_error.h"

#include <json/reader.h>
#include <json/value.h>
#include <json/writer.h>
#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

namespace talvik {

namespace {

constexpr const char* kFirst = "engine.json";
constexpr const char* kSecond = "engine.bak.json";

const std::string kIdPrefix("\x80\x01\x86\x9f\x05", 5);
constexpr std::size_t kRandomOctets = 8;

std::string newEngineId()
{
    char random[kRandomOctets];
    if (getrandom(random, sizeof(random), 0) != static_cast<ssize_t>(sizeof(random))) {
        throw StartupError(std::string("cannot make an engine ID: no random octets: ") +
                           std::strerror(errno));
    }
    return kIdPrefix + std::string(random, sizeof(random));
}

std::optional<EngineState> parseState(const std::string& text)
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value document;
    try {
        if (!reader->parse(text.data(), text.data() + text.size(), &document, nullptr)) {
            return std::nullopt;
        }
    } catch (const Json::Exception&) {  // nesting beyond the reader's limit
        return std::nullopt;
    }
    if (!document.isObject() || document.size() != 2 || !document["engineId"].isString() ||
        !document["boots"].isUInt()) {
        return std::nullopt;
    }
    const auto id = fromHex(document["engineId"].asString());
    const auto boots = document["boots"].asUInt();
    if (!id || !isOwnEngineId(*id) || boots == 0 || boots > kMaxEngineBoots) {
        return std::nullopt;
    }
    return EngineState{*id, boots};
}

std::string format(const EngineState& state)
{
    Json::Value document;
    document["engineId"] = toHex(state.id);
    document["boots"] = state.boots;
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, document) + "\n";
}

/// The one with the higher boots; nothing if there is neither.
std::optional<EngineState> laterRun(const std::optional<EngineState>& one,
                                    const std::optional<EngineState>& other)
{
    if (!one || (other && other->boots > one->boots)) {
        return other;
    }
    return one;
}

EngineState nextRun(EngineState state)
{
    if (state.boots < kMaxEngineBoots) {
        ++state.boots;
    }
    return state;
}

}  // namespace

std::string toHex(const std::string& octets)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char c : octets) {
        const auto octet = static_cast<unsigned char>(c);
        text += kDigits[octet >> 4U];
        text += kDigits[octet & 0xFU];
    }
    return text;
}

std::optional<std::string> fromHex(const std::string& text)
{
    static const std::string kDigits = "0123456789abcdef";
    std::string octets;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const auto high = kDigits.find(text[i]);
        const auto low = i + 1 < text.size() ? kDigits.find(text[i + 1]) : std::string::npos;
        if (high == std::string::npos || low == std::string::npos) {
            return std::nullopt;
        }
        octets += static_cast<char>(high * 16 + low);
    }
    return octets;
}

bool isOwnEngineId(const std::string& id)
{
    return id.size() == kIdPrefix.size() + kRandomOctets &&
           id.compare(0, kIdPrefix.size(), kIdPrefix) == 0;
}

struct EngineStateStore::Copy {
    const char* name;
    bool exists = false;
    std::optional<EngineState> state;  ///< nothing if the file is missing or damaged

    bool isDamaged() const { return exists && !state; }
};

std::string EngineStateStore::path(const char* name) const
{
    return (std::filesystem::path(directory_) / name).string();
}

EngineStateStore::Copy EngineStateStore::read(const char* name) const
{
    Copy copy{name, false, std::nullopt};
    if (const auto text = readFile(path(name))) {
        copy.exists = true;
        copy.state = parseState(*text);
    }
    return copy;
}

std::optional<EngineState> EngineStateStore::choose(const Copy& first, const Copy& second) const
{
    if (first.state && second.state && first.state->id != second.state->id) {
        throw StartupError(path(kFirst) + " and " + path(kSecond) +
                           " hold different engine IDs: remove the one that does not belong to "
                           "this controller");
    }
    const auto library = fallback_();
    if (const auto own = laterRun(first.state, second.state)) {
        // An old copy may be all that is left, or have been put back: boots must not fall behind.
        return library && library->id == own->id ? laterRun(own, library) : own;
    }
    if (library) {
        hostLog()->warn("engine state in {} is lost; continuing with what net-snmp's own file "
                        "still holds: engine ID {}, boots {}",
                        directory_, toHex(library->id), library->boots);
        return library;
    }
    if (first.exists || second.exists || std::filesystem::exists(usedMark_)) {
        throw StartupError(
            "the SNMP engine's state is lost or damaged: neither " + path(kFirst) + " nor " +
            path(kSecond) +
            " can be used. Restore one of them from a backup; or, if managers may take this "
            "controller for a new engine, remove everything in " +
            directory_ + ": a new engine ID is made then");
    }
    return std::nullopt;
}

void EngineStateStore::setAside(const Copy& copy) const
{
    const auto from = path(copy.name);
    for (int n = 1;; ++n) {
        const auto to = from + ".damaged-" + std::to_string(n);
        if (!std::filesystem::exists(to)) {
            renameDurably(from, to);
            hostLog()->warn("engine state {} is damaged: set aside as {} and restored", from, to);
            return;
        }
    }
}

EngineState EngineStateStore::begin() const
{
    const auto first = read(kFirst);
    const auto second = read(kSecond);
    auto known = choose(first, second);
    if (!known) {
        known = EngineState{newEngineId(), 0};
        hostLog()->info("new SNMP engine ID {}", toHex(known->id));
    }
    for (const auto* copy : {&first, &second}) {
        if (copy->isDamaged()) {
            setAside(*copy);
        }
    }
    const auto state = nextRun(*known);
    writeDurably(path(kFirst), format(state));
    writeDurably(path(kSecond), format(state));
    return state;
}

EngineState EngineStateStore::preview() const
{
    const auto known = choose(read(kFirst), read(kSecond));
    return nextRun(known ? *known : EngineState{newEngineId(), 0});
}

}  // namespace talvik
