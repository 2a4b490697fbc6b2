#include "host/snmp/configuration_reload.h"

#include "tests/support/allocation_probe.h"
#include "tests/unit/host_snmp/configuration_reload_kit.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using talvik::test::AllocationProbe;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using ConfigurationReloadFaults = talvik::test::ConfigurationReloadTest;

const std::string kReader = "rocommunity reader\n";
const std::string kWriter = "rocommunity writer\n";
const std::string kUser = "createUser reloaded SHA-256 authentication\n";

/// No file becomes longer than this, for root too; as on a full disk.
class LongestFile {
public:
    explicit LongestFile(rlim_t octets)
    {
        getrlimit(RLIMIT_FSIZE, &former_);
        const rlimit now{octets, former_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &now);
    }

    ~LongestFile()
    {
        setrlimit(RLIMIT_FSIZE, &former_);
        std::signal(SIGXFSZ, action_);
    }

    LongestFile(const LongestFile&) = delete;
    LongestFile& operator=(const LongestFile&) = delete;

private:
    rlimit former_{};
    void (*action_)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

/// While this lives, the word "group" hides a file.
class Hiding {
public:
    explicit Hiding(const std::string& file)
    {
        hidden() = file;
        register_config_handler(talvik::kApplicationName, "group", &hide, nullptr, nullptr);
    }

    ~Hiding() { unregister_config_handler(talvik::kApplicationName, "group"); }

    Hiding(const Hiding&) = delete;
    Hiding& operator=(const Hiding&) = delete;

    static void showAgain() { std::filesystem::rename(hidden() + ".hidden", hidden()); }

private:
    static std::string& hidden()
    {
        static std::string one;
        return one;
    }

    static void hide(const char*, char*)
    {
        std::filesystem::rename(hidden(), hidden() + ".hidden");
    }
};

TEST_F(ConfigurationReloadFaults, PassphrasesAreInNoLine)
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

/// A name that keeps a line short enough for a string's own room would not be seen.
TEST_F(ConfigurationReloadFaults, PassphrasesAreWipedWhateverComesOfThem)
{
    const std::string first = kReader + "createUser first SHA-256 top-secret-words\n"
                                        "createUser -e 0x8000000001 other SHA-256 "
                                        "top-secret-words\n";
    start(first);
    std::vector<std::string> contents = {first, kReader};
    for (const std::string rest :
         {"createUser reloaded SHA-256 top-secret-words\n",
          "createUser reloaded SHA-333 top-secret-words\n",
          "createUser reloaded SHA-256 top-secret-words\nview is wrong\n",
          "createUser reloaded SHA-256 top-secret-words AES tiny\n",
          "createUser -e 0x8000000001 reloaded SHA-256 top-secret-words\n"}) {
        contents.push_back(kReader + rest);
        contents.push_back(kReader + rest + rest + rest + rest + "rocommunity more\n");
    }
    for (const auto& content : contents) {
        folder.write("agent.conf", content);
        AllocationProbe probe;
        probe.watchFor("top-secret");

        reload->run();

        EXPECT_EQ(probe.freedWithBytes(), 0U) << content;
    }
}

TEST_F(ConfigurationReloadFaults, PassphrasesOfTheStartAreWiped)
{
    folder.write("agent.conf", kUser);
    AllocationProbe probe;
    probe.watchFor("authentication");

    {
        const talvik::ConfigurationReload one({folder.path("agent.conf"), folder.path("state")},
                                              false, library);
    }

    EXPECT_GT(probe.allocations(), 0U);
    EXPECT_EQ(probe.freedWithBytes(), 0U);
}

TEST_F(ConfigurationReloadFaults, AFolderThatIsAFileLeavesEverythingAsItWas)
{
    const talvik::test::StoredLine line("vacmView theirs");
    start(kReader);
    folder.write("state", "no folder");

    EXPECT_THAT(becomes(kWriter + kUser),
                ElementsAre(refused(persistent() + " cannot be written: Not a directory")));

    EXPECT_EQ(words.drops(), 0);
    EXPECT_THAT(words.taken(), ElementsAre("rocommunity reader"));
    EXPECT_EQ(known("reloaded"), nullptr);
    std::filesystem::remove(folder.path("state"));
    EXPECT_THAT(again(), ElementsAre(done("taken over", 1)));
    EXPECT_THAT(words.taken(), ElementsAre("rocommunity writer", "vacmView theirs"));
}

TEST_F(ConfigurationReloadFaults, AFullDiskLeavesEverythingAsItWas)
{
    const talvik::test::StoredLine line("vacmView theirs");
    start(kReader);
    becomes(kReader + "view all\n");
    const auto before = folder.read("state/talvik-agentd.conf");
    ASSERT_THAT(before, HasSubstr("theirs"));

    for (const rlim_t octets : {before.size() - 1, before.size() / 2, rlim_t{0}}) {
        folder.write("agent.conf", kWriter + kUser);
        const LongestFile full(octets);
        EXPECT_THAT(again(), ElementsAre(refused(persistent() + " cannot be written whole")));
    }

    EXPECT_THAT(words.taken(), ElementsAre("rocommunity reader", "view all", "vacmView theirs"));
    EXPECT_EQ(known("reloaded"), nullptr);
    EXPECT_EQ(folder.read("state/talvik-agentd.conf"), before);
    EXPECT_FALSE(std::filesystem::exists(folder.path("state/talvik-agentd.0.conf")));
    EXPECT_THAT(again(), ElementsAre(done("taken over", 1)));
}

TEST_F(ConfigurationReloadFaults, AFullDiskKeepsTheFileWhereOnlyUsersChange)
{
    start(kReader);
    becomes(kReader + "view all\n");
    const auto before = folder.read("state/talvik-agentd.conf");

    folder.write("agent.conf", kReader + "view all\n" + kUser);
    const LongestFile full(1);

    EXPECT_THAT(again(), ElementsAre(done("unchanged", 1),
                                     AllOf(HasSubstr(persistent() + " cannot be written whole"),
                                           Not(HasSubstr("stay as they were")))));
    EXPECT_NE(known("reloaded"), nullptr);
    EXPECT_EQ(folder.read("state/talvik-agentd.conf"), before);
}

TEST_F(ConfigurationReloadFaults, RowsOfManagersThatCannotBeReadStayInTheFile)
{
    const talvik::test::StoredLine line("vacmView theirs");
    start(kReader);
    const Hiding hiding(persistent());

    EXPECT_THAT(becomes(kWriter + "group hides\n"),
                ElementsAre(HasSubstr(persistent() + " cannot be read; what managers have written"),
                            done("taken over", 0)));
    EXPECT_THAT(words.taken(), ElementsAre("rocommunity writer"));
    EXPECT_FALSE(std::filesystem::exists(persistent())) << "written without them";
    snmp_store(talvik::kApplicationName);
    EXPECT_FALSE(std::filesystem::exists(persistent())) << "as at the agent's end";

    Hiding::showAgain();
    EXPECT_THAT(becomes(kWriter), ElementsAre(done("taken over", 0)));
    EXPECT_THAT(words.taken(), ElementsAre("rocommunity writer", "vacmView theirs"));
    EXPECT_THAT(folder.read("state/talvik-agentd.conf"), HasSubstr("theirs"));
}

TEST_F(ConfigurationReloadFaults, RowsOfManagersAreReadAgainThoughNothingElseHasChanged)
{
    const talvik::test::StoredLine line("vacmView theirs");
    start(kReader);
    {
        const Hiding hiding(persistent());
        becomes(kWriter + "group hides\n");
    }
    becomes(kWriter);

    Hiding::showAgain();

    EXPECT_THAT(again(), ElementsAre(done("taken over", 0)));
    EXPECT_THAT(words.taken(), ElementsAre("rocommunity writer", "vacmView theirs"));
}

}  // namespace
