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

namespace {

using talvik::ConfigurationReload;
using talvik::test::FakeWords;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const std::string kReader = "rocommunity reader\n";
const std::string kUser = "createUser reloaded SHA-256 authentication\n";

/// Access control is words that only note what is taken, users are the library's.
class ConfigurationReloadOf : public testing::Test {
protected:
    ConfigurationReloadOf()
    {
        register_config_handler(talvik::kApplicationName, "createUser", &usm_parse_create_usmUser,
                                nullptr, nullptr);
    }

    ~ConfigurationReloadOf() override
    {
        unregister_config_handler(talvik::kApplicationName, "createUser");
        while (auto* user = known("reloaded")) {
            usm_remove_user(user);
            usm_free_user(user);
        }
    }

    static usmUser* known(const std::string& name)
    {
        const auto engine = talvik::UsmUsers::ownEngineId();
        return usm_get_user(reinterpret_cast<const u_char*>(engine.data()), engine.size(),
                            name.c_str());
    }

    static std::string keyOf(const std::string& name)
    {
        const auto* user = known(name);
        return user == nullptr ? "" : std::string(user->authKey, user->authKey + user->authKeyLen);
    }

    /// The agent has read `text` and goes on.
    void start(const std::string& text, bool underMaster = false)
    {
        const auto file = folder.write("agent.conf", text);
        read_config(file.c_str(), read_config_get_handlers(talvik::kApplicationName),
                    NORMAL_CONFIG);
        reload = std::make_unique<ConfigurationReload>(
            ConfigurationReload::Files{file, folder.path("persistent.conf")}, underMaster, library);
    }

    /// The file is `text` by now: what the agent says to SIGHUP.
    std::vector<std::string> becomes(const std::string& text)
    {
        folder.write("agent.conf", text);
        return again();
    }

    std::vector<std::string> again()
    {
        const talvik::test::LoggerCapture log("host");
        reload->run();
        return log.lines();
    }

    static auto done(const std::string& access, int users)
    {
        return HasSubstr(": access control " + access +
                         ", users changed or new: " + std::to_string(users));
    }

    static auto refused(const std::string& reason)
    {
        return AllOf(HasSubstr(reason), HasSubstr("; access control and users stay as they were"));
    }

    static auto nextStart(const std::string& word)
    {
        return HasSubstr(": " + word + " has changed; it takes effect at the next start");
    }

    const talvik::test::TempDir folder;
    FakeWords words{{"rocommunity", "view", "sysLocation", "agentAddress", "vacmView"}};
    talvik::LibraryLog library;
    std::unique_ptr<ConfigurationReload> reload;
};

TEST_F(ConfigurationReloadOf, AnUnchangedFileDropsNothing)
{
    start(kReader + kUser);
    const auto key = keyOf("reloaded");

    EXPECT_THAT(again(), ElementsAre(done("unchanged", 0)));

    EXPECT_EQ(words.drops(), 0);
    EXPECT_EQ(keyOf("reloaded"), key);
}

TEST_F(ConfigurationReloadOf, AccessControlIsReplacedAsAWhole)
{
    start(kReader);

    EXPECT_THAT(becomes("rocommunity writer\nview all\n"), ElementsAre(done("taken over", 0)));

    EXPECT_THAT(words.taken(), ElementsAre("rocommunity writer", "view all"));
    EXPECT_THAT(again(), ElementsAre(done("unchanged", 0)));
}

TEST_F(ConfigurationReloadOf, AWrongLineLeavesAccessControlAsItWas)
{
    start(kReader);

    EXPECT_THAT(becomes("rocommunity writer\nview is wrong\n" + kUser),
                ElementsAre(refused("line 2: Error: that is wrong")));

    EXPECT_THAT(words.taken(), ElementsAre("rocommunity reader"));
    EXPECT_EQ(known("reloaded"), nullptr) << "all or nothing";
    EXPECT_THAT(becomes("rocommunity writer\n"), ElementsAre(done("taken over", 0)));
    EXPECT_THAT(words.taken(), ElementsAre("rocommunity writer"));
}

TEST_F(ConfigurationReloadOf, AWrongUserLeavesAccessControlAndOtherUsersAsTheyWere)
{
    start(kReader);

    EXPECT_THAT(becomes("rocommunity writer\n" + kUser + "createUser strange SHA-333 something\n"),
                ElementsAre(refused("createUser strange: ")));

    EXPECT_THAT(words.taken(), ElementsAre("rocommunity reader"));
    EXPECT_EQ(words.drops(), 0);
    EXPECT_EQ(known("reloaded"), nullptr);
}

TEST_F(ConfigurationReloadOf, AFileThatIsGoneLeavesEverythingAsItWas)
{
    start(kReader);
    std::filesystem::remove(folder.path("agent.conf"));

    EXPECT_THAT(again(), ElementsAre(refused("cannot be read")));

    EXPECT_THAT(words.taken(), ElementsAre("rocommunity reader"));
}

TEST_F(ConfigurationReloadOf, AUserIsNewOrChangedOrLeftAlone)
{
    start(kReader);

    EXPECT_THAT(becomes(kReader + kUser), ElementsAre(done("unchanged", 1)));
    const auto key = keyOf("reloaded");
    EXPECT_NE(key, "");
    EXPECT_THAT(again(), ElementsAre(done("unchanged", 0)));
    EXPECT_THAT(becomes(kReader + "createUser reloaded SHA-256 authenticated\n"),
                ElementsAre(done("unchanged", 1)));

    EXPECT_NE(keyOf("reloaded"), key);
}

TEST_F(ConfigurationReloadOf, AUserOfTheTrapSettingsIsRefused)
{
    start(kReader);
    std::string line = "reloaded SHA-256 authentication";
    usm_parse_create_usmUser("createUser", line.data());  // by somebody else, since the start

    EXPECT_THAT(becomes(kReader + kUser),
                ElementsAre(refused("user \"reloaded\" is one of the trap settings already")));
}

TEST_F(ConfigurationReloadOf, WordsThatTakeARestartAreNamedOnceEach)
{
    start(kReader + "sysLocation here\nagentAddress udp:1\nagentAddress udp:2\n");

    EXPECT_THAT(
        becomes(kReader + "sysLocation there\nagentAddress udp:1\nagentAddress udp:3\n"),
        ElementsAre(done("unchanged", 0), nextStart("agentaddress"), nextStart("syslocation")));

    EXPECT_THAT(words.taken(), ElementsAre("rocommunity reader", "sysLocation here",
                                           "agentAddress udp:1", "agentAddress udp:2"));
}

TEST_F(ConfigurationReloadOf, WordsThatTakeARestartAreNamedUntilTheyAreWhatTheStartHad)
{
    for (const std::string& first : {std::string(), std::string("agentAddress udp:1\n")}) {
        start(kReader + first);
        for (int i = 0; i < 3; ++i) {
            EXPECT_THAT(becomes(kReader + first + "sysLocation here\n"),
                        ElementsAre(done("unchanged", 0), nextStart("syslocation")));
        }

        EXPECT_THAT(becomes(kReader + first), ElementsAre(done("unchanged", 0)));
    }
}

TEST_F(ConfigurationReloadOf, UnderAMasterAccessControlIsTheMasters)
{
    start(kReader, true);

    EXPECT_THAT(becomes("rocommunity writer\n" + kUser),
                ElementsAre(done("is the AgentX master's", 1)));

    EXPECT_EQ(words.drops(), 0);
    EXPECT_NE(known("reloaded"), nullptr);
}

TEST_F(ConfigurationReloadOf, WhatManagersWroteIsReadAgainWithTheAccessControl)
{
    folder.write("persistent.conf", "vacmView theirs\nrocommunity no\n");
    start(kReader);

    becomes("rocommunity writer\n");

    EXPECT_THAT(words.taken(), ElementsAre("rocommunity writer", "vacmView theirs"));
}

TEST_F(ConfigurationReloadOf, PassphrasesAreInNoLine)
{
    start(kReader);

    for (const std::string& rest :
         {std::string("SHA-256 top-secret-words\n"), std::string("SHA-333 top-secret-words\n"),
          std::string("SHA-256 top-secret-words AES tiny\n")}) {
        for (const auto& line : becomes(kReader + "createUser reloaded " + rest)) {
            EXPECT_THAT(line, Not(HasSubstr("secret")));
        }
    }
}

}  // namespace
