#pragma once

#include "host/snmp/configuration_words.h"
#include "host/snmp/library_log.h"
#include "host/snmp/secret_text.h"

#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace talvik {

/// Takes over what of the agent configuration can change while the agent runs: access control and
/// users. The library's own way of reading its configuration again would read the persistent file
/// too, and count the engine's boots up with it. All or nothing: where anything is wrong the former
/// access control and users stay. On the agent's thread, between two requests.
class ConfigurationReload {
public:
    struct Files {
        std::string configuration;
        std::string persistentDir;  ///< of the library's persistent file, which has what managers
                                    ///< have written to the access control
    };

    /// After the library has read its files, and before anybody but these makes users. Under an
    /// AgentX master there is no access control. `log` outlives it.
    ConfigurationReload(Files files, bool underMaster, LibraryLog& log);

    /// Reads the file again and says in the log what came of it.
    void run();

private:
    using Line = ConfigurationLine;

    struct User {
        std::string name;
        SecretText line;     ///< empty where it is not needed any more
        std::size_t digest;  ///< tells another line
    };

    struct Content {
        std::vector<Line> access;
        std::vector<User> users;
        std::vector<std::pair<std::string, std::size_t>>
            others;  ///< word and digest; these hold from the next start on
    };

    struct Reading {
        std::string fault;  ///< empty, or there is no content
        std::vector<std::string> warnings;
        Content content;
    };

    Reading read();
    std::vector<const User*> changedUsers(const Content& now) const;
    std::string faultOf(const std::vector<const User*>& users);
    std::string store();
    std::string replaceAccess(const std::vector<std::string>& warned);
    void takeManagersRows();
    void reportOthers(const Content& now) const;
    void remember(Content now);

    const Files files_;
    const bool underMaster_;
    LibraryLog& log_;
    Content content_;
    std::set<std::string> ownUsers_;    ///< of the agent's engine
    bool managersRowsMissing_ = false;  ///< the file has them, the library could not take them over
};

}  // namespace talvik
