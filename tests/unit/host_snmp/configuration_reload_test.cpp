#include "host/snmp/configuration_reload.h"

#include "tests/unit/host_snmp/configuration_reload_kit.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::string kReader = "rocommunity reader\n";
const std::string kUser = "createUser reloaded SHA-256 authentication\n";

using ConfigurationReloadOf = talvik::test::ConfigurationReloadTest;

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
    const talvik::test::StoredLine line("vacmView theirs");
    const talvik::test::StoredLine other("rocommunity no");
    start(kReader);

    becomes("rocommunity writer\n");

    EXPECT_THAT(words.taken(), ElementsAre("rocommunity writer", "vacmView theirs"));
}

const std::string kUnknownWord = "nonsense here\n";

TEST_F(ConfigurationReloadOf, AnUnknownWordIsToldAtEachReadingOnce)
{
    const auto unknown = HasSubstr("line 2: Warning: Unknown token: nonsense.");
    start(kReader + kUnknownWord);

    EXPECT_THAT(again(), ElementsAre(unknown, done("unchanged", 0)));
    EXPECT_THAT(becomes(kReader + kUnknownWord + "view all\n"),
                ElementsAre(unknown, done("taken over", 0)));
    EXPECT_THAT(becomes(kReader + kUnknownWord + kUser),
                ElementsAre(unknown, done("taken over", 1)));
    EXPECT_THAT(becomes(kReader + kUnknownWord + "view is wrong\n"),
                ElementsAre(unknown, refused("line 3: Error: that is wrong")));
}

TEST_F(ConfigurationReloadOf, AnUnknownWordIsToldUnderAMasterToo)
{
    start(kReader, true);

    EXPECT_THAT(becomes(kReader + kUnknownWord), ElementsAre(HasSubstr("Unknown token: nonsense."),
                                                             done("is the AgentX master's", 0)));
}

}  // namespace
