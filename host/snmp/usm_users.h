#pragma once

#include "host/snmp/trap_settings.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace talvik {

/// The version 3 users that notifications are sent as, in the SNMP library's list of users, which
/// goes by engine ID and name. Users of the settings file are put there and taken away by this
/// object; users of the agent itself are only looked at. On the thread of the SNMP library.
class UsmUsers {
public:
    /// Makes the key of a passphrase that algorithms of one name use (RFC 3414, A.2), which takes
    /// milliseconds by intention. Empty if there is no such algorithm.
    using KeyMaker =
        std::function<std::string(const std::string& auth, const std::string& passphrase)>;

    /// A user of the settings known for an engine, as long as there are copies of it.
    using EngineUser = std::shared_ptr<const void>;

    UsmUsers() : UsmUsers(&UsmUsers::makeKey) {}
    explicit UsmUsers(KeyMaker keyMaker);

    /// Takes its users out of the library's list. No `EngineUser` may be left.
    ~UsmUsers();

    UsmUsers(const UsmUsers&) = delete;
    UsmUsers& operator=(const UsmUsers&) = delete;

    /// From now on these are the users, with keys made of their passphrases, which are wiped.
    /// Keys are made of new and changed passphrases only. Returns the names whose sessions must not
    /// be used any longer: users that are new, changed or gone. A name that the agent has as a user
    /// of its own is refused with an error line.
    std::set<std::string> replace(std::vector<TrapUser>& users);

    /// True if messages can be authenticated and encrypted as `name` for `engineId`. A user of the
    /// settings file becomes one of that engine by the way. False with what to do in `problem`.
    bool makeReady(const std::string& name, const std::string& engineId, std::string& problem);

    /// As `makeReady`, for the engine of a receiver: the library's list has the user until the last
    /// copy of the result is gone. Null, with what to do in `problem`.
    EngineUser hold(const std::string& name, const std::string& engineId, std::string& problem);

    /// The ID of the agent's own engine.
    static std::string ownEngineId();

    /// With the SNMP library's algorithms.
    static std::string makeKey(const std::string& auth, const std::string& passphrase);

private:
    struct Keys;
    using EngineAndName = std::pair<std::string, std::string>;

    bool isAgentUser(const std::string& name) const;
    std::string digestOf(const TrapUser& user) const;
    void forget(const std::string& name);
    void release(const EngineAndName& user);
    static bool addUser(std::string name, std::string engineId, const Keys& keys);

    KeyMaker keyMaker_;
    std::string digestKey_;  ///< random
    std::map<std::string, Keys> keys_;
    std::set<EngineAndName> made_;
    std::map<EngineAndName, std::weak_ptr<const void>> held_;
};

}  // namespace talvik
