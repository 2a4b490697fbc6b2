#include "host/snmp/configuration_reload.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/snmp/configuration_words.h"
#include "host/snmp/engine_state.h"
#include "host/snmp/net_snmp.h"
#include "host/snmp/net_snmp_persistence.h"
#include "host/snmp/trap_settings.h"
#include "host/snmp/usm_users.h"

#include <algorithm>
#include <array>
#include <functional>
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

void logWarnings(const std::vector<LibraryLog::Line>& lines)
{
    for (const auto& line : lines) {
        if (line.level == LibraryLog::Level::Warning) {
            hostLog()->warn("{}", oneLine(line.text));
        }
    }
}

usmUser* findUser(std::string engineId, std::string name)
{
    return usm_get_user(reinterpret_cast<u_char*>(engineId.data()), engineId.size(), name.data());
}

std::string wordAt(const std::string& line, std::size_t number)
{
    std::array<char, 256> word{};
    const char* rest = line.c_str();
    for (std::size_t i = 0; i <= number && rest != nullptr; ++i) {
        word.front() = '\0';
        rest = copy_nword_const(rest, word.data(), static_cast<int>(word.size()));
    }
    return word.data();
}

}  // namespace

ConfigurationReload::ConfigurationReload(Files files, bool underMaster, LibraryLog& log)
    : files_(std::move(files)),
      underMaster_(underMaster),
      log_(log)
{
    std::string fault;  // the library has found it by now
    auto start = read(fault).value_or(Content());
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
        wipe(user.line);
        user.line.clear();
    }
    content_.access = std::move(now.access);
    content_.users = std::move(now.users);
}

/// Nothing is taken over yet.
std::optional<ConfigurationReload::Content> ConfigurationReload::read(std::string& fault)
{
    std::vector<Line> lines;
    log_.startKeeping();
    const bool found = collectLines(files_.configuration, lines);
    const auto kept = log_.stopKeeping();
    fault = found ? errorsOf(kept, files_.configuration) : "cannot be read";
    if (!fault.empty()) {
        return std::nullopt;
    }
    Content content;
    for (auto& line : lines) {
        if (accessWords().count(line.first) != 0) {
            content.access.push_back(std::move(line));
        } else if (line.first == kUserWord && wordAt(line.second, 0) != "-e") {
            const auto digest = std::hash<std::string>()(line.second);
            content.users.push_back({wordAt(line.second, 0), line.second, digest});
            wipe(line.second);
        } else {
            content.others.push_back(std::move(line));
        }
    }
    return content;
}

void ConfigurationReload::run()
{
    std::string fault;
    auto now = read(fault);
    const auto users = now ? changedUsers(*now) : std::vector<User>();
    const bool accessChanged = now && !underMaster_ && now->access != content_.access;
    if (fault.empty()) {
        fault = faultOf(users);
    }
    if (fault.empty() && accessChanged) {
        fault = replaceAccess();
    }
    if (!fault.empty()) {
        hostLog()->error("SIGHUP: agent configuration {}: {}; access control and users stay as "
                         "they were",
                         files_.configuration, oneLine(fault));
        return;
    }
    for (const auto& user : users) {
        takeLine(kUserWord, user.line);
        ownUsers_.insert(user.name);
    }
    hostLog()->info("SIGHUP: agent configuration {}: access control {}, users changed or new: {}",
                    files_.configuration,
                    underMaster_    ? "is the AgentX master's"
                    : accessChanged ? "taken over"
                                    : "unchanged",
                    users.size());
    reportOthers(*now);
    remember(std::move(*now));
    snmp_store(kApplicationName);
}

std::vector<ConfigurationReload::User> ConfigurationReload::changedUsers(const Content& now) const
{
    std::vector<User> changed;
    for (const auto& user : now.users) {
        const bool known =
            std::any_of(content_.users.begin(), content_.users.end(), [&](const User& before) {
                return before.name == user.name && before.digest == user.digest;
            });
        if (!known) {
            changed.push_back(user);
        }
    }
    return changed;
}

/// Makes each of them for an engine that nobody has, and takes it away again.
std::string ConfigurationReload::faultOf(const std::vector<User>& users)
{
    const std::string engine(kNobodysEngine.begin(), kNobodysEngine.end());
    for (const auto& user : users) {
        if (ownUsers_.count(user.name) == 0 &&
            findUser(UsmUsers::ownEngineId(), user.name) != nullptr) {
            return "user \"" + user.name +
                   "\" is one of the trap settings already; give one of "
                   "them another name";
        }
        log_.startKeeping();
        takeLine(kUserWord, "-e 0x" + toHex(engine) + " " + user.line);
        const auto errors = errorsOf(log_.stopKeeping(), files_.configuration);
        auto* made = findUser(engine, user.name);
        if (made != nullptr) {
            usm_remove_user(made);
            usm_free_user(made);
        }
        if (made == nullptr || !errors.empty()) {
            const auto text = errors.rfind("Error: ");
            return "createUser " + user.name + ": " +
                   (text == std::string::npos ? "cannot be used" : errors.substr(text + 7));
        }
    }
    return "";
}

/// Returns what is wrong, with the former access control in place again.
std::string ConfigurationReload::replaceAccess()
{
    snmp_store(kApplicationName);
    const auto dropAll = [] {
        dropWords(accessWords());
        vacm_standard_views(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_PRE_READ_CONFIG, nullptr, nullptr);
    };
    dropAll();
    log_.startKeeping();
    const bool found = takeWords(accessWords(), files_.configuration);
    const auto kept = log_.stopKeeping();
    const auto fault = found ? errorsOf(kept, files_.configuration) : "cannot be read";
    logWarnings(kept);
    if (!fault.empty()) {
        dropAll();
        for (const auto& [word, rest] : content_.access) {
            takeLine(word, rest);
        }
    }
    takeWords(managersWords(), files_.persistent);
    return fault;
}

void ConfigurationReload::reportOthers(const Content& now) const
{
    Words changed;
    const auto compare = [&](const std::vector<Line>& some, const std::vector<Line>& others) {
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
