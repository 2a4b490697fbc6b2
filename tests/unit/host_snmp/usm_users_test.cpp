#include "host/snmp/usm_users.h"

#include "host/snmp/trap_encoder.h"
#include "tests/unit/host_snmp/log_kit.h"
#include "tests/unit/host_snmp/sender_kit.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using talvik::TrapUser;
using talvik::UsmUsers;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kOther = "\x80\x01\x86\x9F\x05other";

TrapUser user(const std::string& name, const std::string& passphrase = "authentication")
{
    return {name, "SHA-256", passphrase, "AES", "privacy-phrase"};
}

class VersionThreeUsers : public testing::Test {
protected:
    ~VersionThreeUsers() override
    {
        for (auto* known : {agentUser("agentuser"), agentUser("plainuser")}) {
            if (known != nullptr) {
                usm_remove_user(known);
                usm_free_user(known);
            }
        }
    }

    /// As a line of the agent's configuration does.
    static void createAgentUser(std::string line)
    {
        usm_parse_create_usmUser("createUser", line.data());
    }

    static usmUser* agentUser(const std::string& name)
    {
        return userOf(UsmUsers::ownEngineId(), name);
    }

    static usmUser* userOf(const std::string& engineId, const std::string& name)
    {
        return usm_get_user(reinterpret_cast<const u_char*>(engineId.data()), engineId.size(),
                            name.c_str());
    }

    std::set<std::string> replace(std::vector<TrapUser> users)
    {
        auto changed = users_.replace(users);
        for (const auto& each : users) {
            EXPECT_EQ(each.authPassphrase, "");
            EXPECT_EQ(each.privacyPassphrase, "");
        }
        return changed;
    }

    talvik::test::LoggerCapture log_{"host"};
    UsmUsers users_;
    std::string problem_;
};

TEST_F(VersionThreeUsers, AreMadeForEachEngineAndTakenAway)
{
    {
        UsmUsers users;
        std::vector<TrapUser> settings{user("trapuser")};
        users.replace(settings);
        EXPECT_TRUE(users.makeReady("trapuser", UsmUsers::ownEngineId(), problem_));
        EXPECT_TRUE(users.makeReady("trapuser", kOther, problem_));
        ASSERT_NE(agentUser("trapuser"), nullptr);
        ASSERT_NE(userOf(kOther, "trapuser"), nullptr);
        EXPECT_NE(std::string(agentUser("trapuser")->authKey, agentUser("trapuser")->authKey + 32),
                  std::string(userOf(kOther, "trapuser")->authKey,
                              userOf(kOther, "trapuser")->authKey + 32));
        EXPECT_EQ(agentUser("trapuser")->userStorageType, ST_READONLY) << "it is never stored";
    }
    EXPECT_EQ(agentUser("trapuser"), nullptr);
    EXPECT_EQ(userOf(kOther, "trapuser"), nullptr);
}

TEST_F(VersionThreeUsers, ThatChangedAreNamed)
{
    EXPECT_THAT(replace({user("a"), user("b"), user("c")}), ElementsAre("a", "b", "c"));
    ASSERT_TRUE(users_.makeReady("a", kOther, problem_));
    ASSERT_TRUE(users_.makeReady("b", kOther, problem_));

    EXPECT_THAT(replace({user("a"), user("b", "other-phrase"), user("d")}),
                ElementsAre("b", "c", "d"));

    EXPECT_NE(userOf(kOther, "a"), nullptr);
    EXPECT_EQ(userOf(kOther, "b"), nullptr);
    EXPECT_THAT(replace({user("a"), user("b", "other-phrase"), user("d")}), IsEmpty());
}

TEST_F(VersionThreeUsers, ThatStayAreNotMadeAgain)
{
    std::vector<std::string> made;
    UsmUsers users([&](const std::string& auth, const std::string& passphrase) {
        made.push_back(passphrase);
        return UsmUsers::makeKey(auth, passphrase);
    });
    std::vector<TrapUser> settings{user("a"), user("b"), user("c")};
    users.replace(settings);
    ASSERT_EQ(made.size(), 6u);
    made.clear();

    settings = {user("a"), user("b", "other-phrase"), user("d", "fourth-phrase")};
    EXPECT_THAT(users.replace(settings), ElementsAre("b", "c", "d"));
    EXPECT_THAT(made,
                ElementsAre("other-phrase", "privacy-phrase", "fourth-phrase", "privacy-phrase"));
    EXPECT_TRUE(users.makeReady("a", kOther, problem_)) << "its keys are still there";
}

TEST_F(VersionThreeUsers, ChangeWithEveryMember)
{
    replace({user("a")});
    for (auto member : {&TrapUser::auth, &TrapUser::authPassphrase, &TrapUser::privacy,
                        &TrapUser::privacyPassphrase}) {
        auto other = user("a");
        other.*member = member == &TrapUser::auth      ? "SHA-512"
                        : member == &TrapUser::privacy ? "AES-256"
                                                       : "another-phrase";
        EXPECT_THAT(replace({other}), ElementsAre("a"));
        EXPECT_THAT(replace({user("a")}), ElementsAre("a"));
    }
    EXPECT_THAT(replace({user("a")}), IsEmpty());
}

TEST_F(VersionThreeUsers, OfTheAgentSendTraps)
{
    createAgentUser(R"(agentuser SHA-256 "agent-passphrase" AES "agent-privacy")");

    EXPECT_TRUE(users_.makeReady("agentuser", UsmUsers::ownEngineId(), problem_)) << problem_;
    EXPECT_TRUE(
        talvik::encodeTrap({{1, 3, 6, 1, 4, 1}, 1, {}}, {3, "agentuser", {}}, problem_).has_value())
        << problem_;
}

TEST_F(VersionThreeUsers, OfTheAgentSendNoInforms)
{
    createAgentUser(R"(agentuser SHA-256 "agent-passphrase" AES "agent-privacy")");

    EXPECT_FALSE(users_.makeReady("agentuser", kOther, problem_));
    EXPECT_THAT(problem_, HasSubstr("cannot send informs"));
}

TEST_F(VersionThreeUsers, OfTheAgentNeedBothPassphrases)
{
    createAgentUser(R"(plainuser SHA-256 "agent-passphrase")");

    EXPECT_FALSE(users_.makeReady("plainuser", UsmUsers::ownEngineId(), problem_));
    EXPECT_THAT(problem_, HasSubstr("no passphrases for authentication and privacy"));
}

TEST_F(VersionThreeUsers, OfTheAgentAreNotReplacedByTheSettings)
{
    createAgentUser(R"(agentuser SHA-256 "agent-passphrase" AES "agent-privacy")");
    const auto* before = agentUser("agentuser");

    EXPECT_THAT(replace({user("agentuser"), user("trapuser")}), ElementsAre("trapuser"));

    EXPECT_EQ(agentUser("agentuser"), before);
    ASSERT_EQ(log_.lines().size(), 1u);
    EXPECT_THAT(log_.lines()[0], HasSubstr("user \"agentuser\" is a user of the agent's own"));
}

TEST_F(VersionThreeUsers, OfTheSettingsMayBeThereAlready)
{
    replace({user("trapuser")});
    ASSERT_TRUE(users_.makeReady("trapuser", UsmUsers::ownEngineId(), problem_));

    EXPECT_THAT(replace({user("trapuser", "other-phrase")}), ElementsAre("trapuser"));

    EXPECT_THAT(log_.lines(), IsEmpty()) << "it is no user of the agent";
}

}  // namespace
