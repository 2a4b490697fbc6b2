#include "host/snmp/configuration_reload.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/snmp/configuration_words.h"
#include "host/snmp/engine_state.h"
#include "host/snmp/net_snmp.h"
#include "host/snmp/net_snmp_persistence.h"
#include "host/snmp/usm_users.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string_view>
#include <utility>

// Exported by the library, declared in none of its headers: makes the views "_all_" and "_none_".
extern "C" SNMPCallback vacm_standard_views;

namespace talvik {

namespace {

using Words = std::set<std::string>;

const Words& accessWords()
{
    static const Words kWords = {
        "com2sec",     "com2sec6",      "com2secunix",  "group",     "access",     "setaccess",
        "view",        "authcommunity", "authuser",     "authgroup", "authaccess", "rocommunity",
        "rwcommunity", "rocommunity6",  "rwcommunity6", "rouser",    "rwuser"};
    return kWords;
}

/// What the persistent file has of access control.
const Words& managersWords()
{
    static const Words kWords = {"vacmview", "vacmgroup", "vacmaccess", "vacmauthaccess"};
    return kWords;
}

constexpr const char* kUserWord = "createuser";

/// An engine that nobody has, for trying a user out.
constexpr std::array<unsigned char, 9> kNobodysEngine = {0x80, 0,   0x1F, 0x88, 5,
                                                         't',  'e', 's',  't'};

/// Without the name of `file`, which whoever reports them tells.
std::string errorsOf(const std::vector<LibraryLog::Line>& lines, const std::string& file)
{
    const auto start = file + ": ";
    std::string text;
    for (const auto& line : lines) {
        if (line.level == LibraryLog::Level::Error) {
            const bool named = line.text.compare(0, start.size(), start) == 0;
            text += (text.empty() ? "" : "; ") + line.text.substr(named ? start.size() : 0);
        }
    }
    return text;
}

std::vector<std::string> warningsOf(const std::vector<LibraryLog::Line>& lines)
{
    std::vector<std::string> warnings;
    for (const auto& line : lines) {
        if (line.level == LibraryLog::Level::Warning) {
            warnings.push_back(line.text);
        }
    }
    return warnings;
}

void logWarnings(const std::vector<std::string>& warnings,
                 const std::vector<std::string>& logged = {})
{
    for (const auto& warning : warnings) {
        if (std::find(logged.begin(), logged.end(), warning) == logged.end()) {
            hostLog()->warn("{}", oneLine(warning));
        }
    }
}

std::size_t digestOf(const SecretText& text)
{
    return std::hash<std::string_view>()(text.view());
}

usmUser* findUser(std::string engineId, std::string name)
{
    return usm_get_user(reinterpret_cast<u_char*>(engineId.data()), engineId.size(), name.data());
}

/// The first word of a line, which is no passphrase.
std::string firstWord(const SecretText& line)
{
    std::array<char, 256> word{};
    copy_nword_const(line.data(), word.data(), static_cast<int>(word.size()));
    return word.data();
}

}  // namespace

ConfigurationReload::ConfigurationReload(Files files, bool underMaster, LibraryLog& log)
    : files_(std::move(files)),
      underMaster_(underMaster),
      log_(log)
{
    auto start = read().content;                // the library has told by now what is wrong with it
    content_.others = std::move(start.others);  // these hold
    remember(std::move(start));
    const auto engine = UsmUsers::ownEngineId();
    for (const auto* user = usm_get_userList(); user != nullptr; user = user->next) {
        if (std::string(user->engineID, user->engineID + user->engineIDLen) == engine) {
            ownUsers_.insert(user->name);
        }
    }
}

void ConfigurationReload::remember(Content now)
{
    for (auto& user : now.users) {
        user.line = SecretText();
    }
    content_.access = std::move(now.access);
    content_.users = std::move(now.users);
}

/// Nothing is taken over yet.
ConfigurationReload::Reading ConfigurationReload::read()
{
    std::vector<Line> lines;
    log_.startKeeping();
    const bool found = collectLines(files_.configuration, lines);
    const auto kept = log_.stopKeeping();
    Reading reading;
    reading.fault = found ? errorsOf(kept, files_.configuration) : "cannot be read";
    reading.warnings = warningsOf(kept);
    if (!reading.fault.empty()) {
        return reading;
    }
    auto& content = reading.content;
    for (auto& [word, rest] : lines) {
        if (accessWords().count(word) != 0) {
            content.access.emplace_back(std::move(word), std::move(rest));
        } else if (word == kUserWord && firstWord(rest) != "-e") {
            const auto digest = digestOf(rest);
            auto name = firstWord(rest);
            content.users.push_back({std::move(name), std::move(rest), digest});
        } else {
            content.others.emplace_back(std::move(word), digestOf(rest));
        }
    }
    return reading;
}

void ConfigurationReload::run()
{
    auto reading = read();
    auto& now = reading.content;
    logWarnings(reading.warnings);
    auto fault = std::move(reading.fault);
    const auto users = changedUsers(now);
    const bool accessChanged =
        !underMaster_ && (managersRowsMissing_ || now.access != content_.access);
    if (fault.empty()) {
        fault = faultOf(users);
    }
    if (fault.empty() && accessChanged) {
        fault = replaceAccess(reading.warnings);
    }
    if (!fault.empty()) {
        hostLog()->error("SIGHUP: agent configuration {}: {}; access control and users stay as "
                         "they were",
                         files_.configuration, oneLine(fault));
        return;
    }
    for (const auto* user : users) {
        takeLine(kUserWord, user->line);
        ownUsers_.insert(user->name);
    }
    hostLog()->info("SIGHUP: agent configuration {}: access control {}, users changed or new: {}",
                    files_.configuration,
                    underMaster_    ? "is the AgentX master's"
                    : accessChanged ? "taken over"
                                    : "unchanged",
                    users.size());
    reportOthers(now);
    remember(std::move(now));
    if (managersRowsMissing_) {
        return;  // the file has what the library has not
    }
    if (const auto unwritten = store(); !unwritten.empty()) {
        hostLog()->error("SIGHUP: {}; what was taken over holds, but what managers have changed "
                         "since the file was written may be lost at the next start",
                         oneLine(unwritten));
    }
}

std::vector<const ConfigurationReload::User*>
ConfigurationReload::changedUsers(const Content& now) const
{
    std::vector<const User*> changed;
    for (const auto& user : now.users) {
        const bool known =
            std::any_of(content_.users.begin(), content_.users.end(), [&](const User& before) {
                return before.name == user.name && before.digest == user.digest;
            });
        if (!known) {
            changed.push_back(&user);
        }
    }
    return changed;
}

/// Makes each of them for an engine that nobody has, and takes it away again.
std::string ConfigurationReload::faultOf(const std::vector<const User*>& users)
{
    const std::string engine(kNobodysEngine.begin(), kNobodysEngine.end());
    for (const auto* user : users) {
        const auto& name = user->name;
        if (ownUsers_.count(name) == 0 && findUser(UsmUsers::ownEngineId(), name) != nullptr) {
            return "user \"" + name +
                   "\" is one of the trap settings already; give one of "
                   "them another name";
        }
        log_.startKeeping();
        takeLine(kUserWord, SecretText{"-e 0x", toHex(engine), " ", user->line.view()});
        const auto errors = errorsOf(log_.stopKeeping(), files_.configuration);
        auto* made = findUser(engine, name);
        if (made != nullptr) {
            usm_remove_user(made);
            usm_free_user(made);
        }
        if (made == nullptr || !errors.empty()) {
            const auto text = errors.rfind("Error: ");
            return "createUser " + name + ": " +
                   (text == std::string::npos ? "cannot be used" : errors.substr(text + 7));
        }
    }
    return "";
}

/// What managers have written, into the library's file. Returns what is wrong.
std::string ConfigurationReload::store()
{
    log_.startKeeping();
    auto fault = storeForNextStart(files_.persistentDir);
    log_.stopKeeping();  // the library's words for the same
    return std::move(fault).value_or("");
}

/// Returns what is wrong, with the former access control in place again; says nothing of `warned`.
std::string ConfigurationReload::replaceAccess(const std::vector<std::string>& warned)
{
    if (!managersRowsMissing_) {
        auto unwritten = store();  // or what managers have written would be gone
        if (!unwritten.empty()) {
            return unwritten;
        }
    }
    const auto dropAll = [] {
        dropWords(accessWords());
        vacm_standard_views(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_PRE_READ_CONFIG, nullptr, nullptr);
    };
    dropAll();
    log_.startKeeping();
    const bool found = takeWords(accessWords(), files_.configuration);
    const auto kept = log_.stopKeeping();
    const auto fault = found ? errorsOf(kept, files_.configuration) : "cannot be read";
    logWarnings(warningsOf(kept), warned);
    if (!fault.empty()) {
        dropAll();
        for (const auto& [word, rest] : content_.access) {
            takeLine(word, rest);
        }
    }
    takeManagersRows();
    return fault;
}

/// While they are missing, the library must not write its file anew: it would be without them.
void ConfigurationReload::takeManagersRows()
{
    const auto file = persistentFileIn(files_.persistentDir);
    const bool missing = !takeWords(managersWords(), file);
    if (std::exchange(managersRowsMissing_, missing) != missing) {
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE,
                               missing ? 1 : 0);
    }
    if (missing) {
        hostLog()->error("SIGHUP: {} cannot be read; what managers have written to the access "
                         "control does not hold and nothing is written to that file until the next "
                         "SIGHUP or start can read it",
                         file);
    }
}

void ConfigurationReload::reportOthers(const Content& now) const
{
    Words changed;
    const auto compare = [&](const auto& some, const auto& others) {
        for (const auto& line : some) {
            if (std::count(some.begin(), some.end(), line) !=
                std::count(others.begin(), others.end(), line)) {
                changed.insert(line.first);
            }
        }
    };
    compare(now.others, content_.others);
    compare(content_.others, now.others);
    for (const auto& word : changed) {
        hostLog()->warn("SIGHUP: agent configuration {}: {} has changed; it takes effect at the "
                        "next start",
                        files_.configuration, oneLine(word));
    }
}

}  // namespace talvik
