#include "host/snmp/usm_users.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/snmp/net_snmp.h"

#include <cstring>
#include <utility>

namespace talvik {

/// The algorithms of a user and its keys before they are made those of one engine.
struct UsmUsers::Keys {
    std::string auth;
    std::string privacy;
    std::string authKey;
    std::string privacyKey;

    bool operator==(const Keys& other) const
    {
        return auth == other.auth && privacy == other.privacy && authKey == other.authKey &&
               privacyKey == other.privacyKey;
    }
};

namespace {

const unsigned char* octets(const std::string& text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

usmUser* findUser(const std::string& engineId, const std::string& name)
{
    return usm_get_user(octets(engineId), engineId.size(), name.c_str());
}

/// The entry and its keys are gone when it returns.
void removeUser(const std::string& engineId, const std::string& name)
{
    auto* user = findUser(engineId, name);
    if (user != nullptr) {
        usm_remove_user(user);
        usm_free_user(user);
    }
}

bool canEncrypt(const usmUser& user)
{
    return user.userStatus == RS_ACTIVE && user.authKeyLen != 0 && user.privKeyLen != 0;
}

oid* authProtocolOf(const std::string& name, std::size_t& length)
{
    return sc_get_auth_oid(usm_lookup_auth_type(name.c_str()), &length);
}

oid* privacyProtocolOf(const std::string& name, std::size_t& length)
{
    return sc_get_priv_oid(usm_lookup_priv_type(name.c_str()), &length);
}

/// The key that `passphrase` gives; empty if the library has no such algorithm.
std::string keyOf(const std::string& auth, const std::string& passphrase)
{
    std::size_t protocolLength = 0;
    const auto* protocol = authProtocolOf(auth, protocolLength);
    u_char key[USM_AUTH_KU_LEN];
    std::size_t length = sizeof(key);
    if (protocol == nullptr ||
        generate_Ku(protocol, static_cast<u_int>(protocolLength), octets(passphrase),
                    passphrase.size(), key, &length) != SNMPERR_SUCCESS) {
        return "";
    }
    std::string text(key, key + length);
    explicit_bzero(key, sizeof(key));
    return text;
}

std::string whyUnknown(const std::string& name, bool ownEngine)
{
    if (name == "--" || name.empty()) {
        return "version 3 needs a user and the receiver has none; write its user column";
    }
    return "user \"" + name + "\" is not known; add it to \"users\" of the trap settings" +
           (ownEngine ? ", or with createUser to the agent's configuration"
                      : " (a user of the agent's own configuration cannot send informs)");
}

}  // namespace

UsmUsers::UsmUsers() = default;

UsmUsers::~UsmUsers()
{
    for (const auto& [engineId, name] : made_) {
        removeUser(engineId, name);
    }
    for (auto& [name, keys] : keys_) {
        wipe(keys.authKey);
        wipe(keys.privacyKey);
    }
}

std::string UsmUsers::ownEngineId()
{
    u_char id[SNMP_MAX_ENG_SIZE];
    const auto length = snmpv3_get_engineID(id, sizeof(id));
    return {id, id + length};
}

bool UsmUsers::isAgentUser(const std::string& name) const
{
    const auto own = ownEngineId();
    return made_.count({own, name}) == 0 && findUser(own, name) != nullptr;
}

bool UsmUsers::addUser(std::string name, std::string engineId, const Keys& keys)
{
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = SNMP_VERSION_3;
    session.securityModel = SNMP_SEC_MODEL_USM;
    session.securityName = name.data();
    session.securityNameLen = name.size();
    session.securityEngineID = reinterpret_cast<u_char*>(engineId.data());
    session.securityEngineIDLen = engineId.size();
    session.securityAuthProto = authProtocolOf(keys.auth, session.securityAuthProtoLen);
    session.securityPrivProto = privacyProtocolOf(keys.privacy, session.securityPrivProtoLen);
    session.securityAuthKeyLen = keys.authKey.size();
    std::memcpy(session.securityAuthKey, keys.authKey.data(), keys.authKey.size());
    session.securityPrivKeyLen = keys.privacyKey.size();
    std::memcpy(session.securityPrivKey, keys.privacyKey.data(), keys.privacyKey.size());
    const bool made = !keys.authKey.empty() && session.securityPrivProto != nullptr &&
                      usm_create_user_from_session(&session) == SNMPERR_SUCCESS;
    explicit_bzero(&session, sizeof(session));
    return made;
}

void UsmUsers::forget(const std::string& name)
{
    for (auto made = made_.begin(); made != made_.end();) {
        if (made->second == name) {
            removeUser(made->first, name);
            made = made_.erase(made);
        } else {
            ++made;
        }
    }
}

std::set<std::string> UsmUsers::replace(std::vector<TrapUser>& users)
{
    std::map<std::string, Keys> keys;
    for (auto& user : users) {
        if (isAgentUser(user.name)) {
            hostLog()->error("trap settings: user \"{}\" is a user of the agent's own "
                             "configuration already and not taken from \"users\"; give one of them "
                             "another name",
                             oneLine(user.name));
        } else {
            keys[user.name] = {user.auth, user.privacy, keyOf(user.auth, user.authPassphrase),
                               keyOf(user.auth, user.privacyPassphrase)};
        }
        wipe(user.authPassphrase);
        wipe(user.privacyPassphrase);
    }
    std::set<std::string> changed;
    for (auto& [name, old] : keys_) {
        const auto now = keys.find(name);
        if (now == keys.end() || !(now->second == old)) {
            changed.insert(name);
        }
        wipe(old.authKey);
        wipe(old.privacyKey);
    }
    for (const auto& entry : keys) {
        if (keys_.count(entry.first) == 0) {
            changed.insert(entry.first);
        }
    }
    keys_ = std::move(keys);
    for (const auto& name : changed) {
        forget(name);
    }
    return changed;
}

bool UsmUsers::makeReady(const std::string& name, const std::string& engineId, std::string& problem)
{
    if (const auto* known = findUser(engineId, name)) {
        if (!canEncrypt(*known)) {
            problem = "user \"" + name +
                      "\" of the agent's configuration has no passphrases for authentication and "
                      "privacy; give it both with createUser";
        }
        return canEncrypt(*known);
    }
    const auto keys = keys_.find(name);
    if (keys == keys_.end()) {
        problem = whyUnknown(name, engineId == ownEngineId());
        return false;
    }
    if (!addUser(name, engineId, keys->second)) {
        problem = "the SNMP library cannot make keys of " + keys->second.auth + " and " +
                  keys->second.privacy + " for user \"" + name + "\"";
        return false;
    }
    made_.emplace(engineId, name);
    return true;
}

}  // namespace talvik
