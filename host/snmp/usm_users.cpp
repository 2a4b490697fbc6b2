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
    std::string digest;  ///< of all that it was made of; empty: unknown

    void wipeAll()
    {
        wipe(authKey);
        wipe(privacyKey);
        wipe(digest);
    }
};

namespace {

constexpr std::size_t kDigestSize = 32;  // of SHA-256, as the key

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

UsmUsers::UsmUsers(KeyMaker keyMaker) : keyMaker_(std::move(keyMaker))
{
    u_char key[kDigestSize];
    std::size_t length = sizeof(key);
    if (sc_random(key, &length) == SNMPERR_SUCCESS) {
        digestKey_.assign(key, key + length);
    }
    explicit_bzero(key, sizeof(key));
}

UsmUsers::~UsmUsers()
{
    for (const auto& [engineId, name] : made_) {
        removeUser(engineId, name);
    }
    for (auto& [name, keys] : keys_) {
        keys.wipeAll();
    }
    wipe(digestKey_);
}

std::string UsmUsers::ownEngineId()
{
    u_char id[SNMP_MAX_ENG_SIZE];
    const auto length = snmpv3_get_engineID(id, sizeof(id));
    return {id, id + length};
}

std::string UsmUsers::makeKey(const std::string& auth, const std::string& passphrase)
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

/// Tells a changed user without its keys or passphrases; says nothing to who lacks the random key.
/// Empty if there is none.
std::string UsmUsers::digestOf(const TrapUser& user) const
{
    std::size_t protocolLength = 0;
    const auto* protocol = authProtocolOf("SHA-256", protocolLength);
    // No text has a NUL within.
    auto all = user.auth + '\0' + user.authPassphrase + '\0' + user.privacy + '\0' +
               user.privacyPassphrase;
    u_char digest[kDigestSize];
    std::size_t length = sizeof(digest);
    const bool made =
        !digestKey_.empty() && protocol != nullptr &&
        sc_generate_keyed_hash(protocol, protocolLength, octets(digestKey_),
                               static_cast<u_int>(digestKey_.size()), octets(all),
                               static_cast<u_int>(all.size()), digest, &length) == SNMPERR_SUCCESS;
    wipe(all);
    return made ? std::string(digest, digest + length) : "";
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
    std::set<std::string> changed;
    for (auto& user : users) {
        auto digest = digestOf(user);
        const auto known = keys_.find(user.name);
        if (isAgentUser(user.name)) {
            hostLog()->error("trap settings: user \"{}\" is a user of the agent's own "
                             "configuration already and not taken from \"users\"; give one of them "
                             "another name",
                             oneLine(user.name));
        } else if (known != keys_.end() && !digest.empty() && known->second.digest == digest) {
            keys.insert(keys_.extract(known));
        } else {
            keys[user.name] = {user.auth, user.privacy, keyMaker_(user.auth, user.authPassphrase),
                               keyMaker_(user.auth, user.privacyPassphrase), std::move(digest)};
            changed.insert(user.name);
        }
        wipe(user.authPassphrase);
        wipe(user.privacyPassphrase);
    }
    for (auto& [name, old] : keys_) {  // what is left of them
        old.wipeAll();
        changed.insert(name);
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

UsmUsers::EngineUser UsmUsers::hold(const std::string& name, const std::string& engineId,
                                    std::string& problem)
{
    if (!makeReady(name, engineId, problem)) {
        return nullptr;
    }
    const EngineAndName key(engineId, name);
    auto& held = held_[key];
    auto user = held.lock();
    if (!user) {
        user = EngineUser(this, [this, key](const void*) { release(key); });
        held = user;
    }
    return user;
}

/// Nobody holds it any longer.
void UsmUsers::release(const EngineAndName& user)
{
    held_.erase(user);
    if (made_.erase(user) != 0) {
        removeUser(user.first, user.second);
    }
}

}  // namespace talvik
