#pragma once

#include "host/snmp/trap_settings.h"

#include <map>
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
    UsmUsers();

    /// Takes its users out of the library's list.
    ~UsmUsers();

    UsmUsers(const UsmUsers&) = delete;
    UsmUsers& operator=(const UsmUsers&) = delete;

    /// From now on these are the users, with keys made of their passphrases, which are wiped.
    /// Returns the names whose sessions must not be used any longer: users that are new, changed or
    /// gone. A name that the agent has as a user of its own is refused with an error line.
    std::set<std::string> replace(std::vector<TrapUser>& users);

    /// True if messages can be authenticated and encrypted as `name` for `engineId`. A user of the
    /// settings file becomes one of that engine by the way. False with what to do in `problem`.
    bool makeReady(const std::string& name, const std::string& engineId, std::string& problem);

    /// The ID of the agent's own engine.
    static std::string ownEngineId();

private:
    struct Keys;

    bool isAgentUser(const std::string& name) const;
    void forget(const std::string& name);
    static bool addUser(std::string name, std::string engineId, const Keys& keys);

    std::map<std::string, Keys> keys_;
    std::set<std::pair<std::string, std::string>> made_;  ///< engine ID and name
};

}  // namespace talvik
