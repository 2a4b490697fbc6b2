#pragma once

#include "host/snmp/configuration_reload.h"
#include "host/snmp/usm_users.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host_snmp/configuration_kit.h"
#include "tests/unit/host_snmp/log_kit.h"
#include "tests/unit/host_snmp/sender_kit.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace talvik::test {

/// While this lives, the library writes `line` into its persistent file.
class StoredLine {
public:
    explicit StoredLine(const char* line) : line_(line)
    {
        netsnmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_STORE_DATA, &write,
                                  const_cast<char*>(line_), NETSNMP_CALLBACK_HIGHEST_PRIORITY);
    }

    ~StoredLine()
    {
        snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_STORE_DATA, &write,
                                 const_cast<char*>(line_), 1);
    }

    StoredLine(const StoredLine&) = delete;
    StoredLine& operator=(const StoredLine&) = delete;

private:
    static int write(int, int, void*, void* line)
    {
        read_config_store(kApplicationName, static_cast<const char*>(line));
        return SNMPERR_SUCCESS;
    }

    const char* line_;
};

/// Access control is words that only note what is taken; users and the persistent file are the
/// library's.
class ConfigurationReloadTest : public testing::Test {
protected:
    ConfigurationReloadTest()
    {
        register_config_handler(kApplicationName, "createUser", &usm_parse_create_usmUser, nullptr,
                                nullptr);
        static const bool marked = (markPersistentFileComplete(), true);
        keepsState(marked);
    }

    ~ConfigurationReloadTest() override
    {
        keepsState(false);
        unregister_config_handler(kApplicationName, "createUser");
        while (auto* user = known("reloaded")) {
            usm_remove_user(user);
            usm_free_user(user);
        }
    }

    static usmUser* known(const std::string& name)
    {
        const auto engine = UsmUsers::ownEngineId();
        return usm_get_user(reinterpret_cast<const u_char*>(engine.data()), engine.size(),
                            name.c_str());
    }

    static std::string keyOf(const std::string& name)
    {
        const auto* user = known(name);
        return user == nullptr ? "" : std::string(user->authKey, user->authKey + user->authKeyLen);
    }

    /// The library's persistent file.
    std::string persistent() const { return persistentFileIn(folder.path("state")); }

    /// The agent has read `text` and goes on.
    void start(const std::string& text, bool underMaster = false)
    {
        const auto file = folder.write("agent.conf", text);
        read_config(file.c_str(), read_config_get_handlers(kApplicationName), NORMAL_CONFIG);
        reload = std::make_unique<ConfigurationReload>(
            ConfigurationReload::Files{file, folder.path("state")}, underMaster, library);
    }

    /// The file is `text` by now: what the agent says to SIGHUP.
    std::vector<std::string> becomes(const std::string& text)
    {
        folder.write("agent.conf", text);
        return again();
    }

    std::vector<std::string> again()
    {
        const LoggerCapture log("host");
        reload->run();
        return log.lines();
    }

    static auto done(const std::string& access, int users)
    {
        return testing::HasSubstr(": access control " + access +
                                  ", users changed or new: " + std::to_string(users));
    }

    static auto refused(const std::string& reason)
    {
        return testing::AllOf(testing::HasSubstr(reason),
                              testing::HasSubstr("; access control and users stay as they were"));
    }

    static auto nextStart(const std::string& word)
    {
        return testing::HasSubstr(": " + word + " has changed; it takes effect at the next start");
    }

private:
    void keepsState(bool keeps)
    {
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE,
                               keeps ? 0 : 1);
        netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_PERSISTENT_DIR,
                              keeps ? folder.path("state").c_str() : nullptr);
    }

protected:
    const TempDir folder;
    FakeWords words{{"rocommunity", "view", "sysLocation", "agentAddress", "vacmView"}};
    LibraryLog library;
    std::unique_ptr<ConfigurationReload> reload;
};

}  // namespace talvik::test
