#include "tests/support/temp_dir.h"
#include "tests/unit/backend/program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

using namespace talvik::test;
using testing::AllOf;
using testing::HasSubstr;

using Words = std::vector<std::string>;

/// Runs `talvikctl trap` with `words`, which must not get as far as asking an agent; returns what
/// it printed.
std::string refused(Words words)
{
    words.insert(words.begin(), "trap");
    Program program("talvikctl", words);
    EXPECT_EQ(program.wait(), 2) << program.output();
    return program.output();
}

struct Usage {
    const char* name;
    Words words;
    const char* message;

    friend std::ostream& operator<<(std::ostream& os, const Usage& row) { return os << row.name; }
};

const Usage kWrong[] = {
    {"NoCommand", {}, "talvikctl: talvikctl trap needs a command: one of list, add, modify, "},
    {"UnknownCommand",
     {"show"},
     "talvikctl: \"show\" is no command of talvikctl trap; it is one of list, add, modify, remove, "
     "import, status, test; talvikctl trap --help"},
    {"CommandOfTheParent", {"watch"}, "\"watch\" is no command of talvikctl trap; it is one of"},
    {"AddNothing", {"add"}, "ADDRESS is required"},
    {"AddTwo", {"add", "192.0.2.1", "192.0.2.2"}, "192.0.2.2"},
    {"PortZero", {"add", "a", "--port", "0"}, "--port: \"0\" is no number from 1 to 65535"},
    {"PortTooLarge", {"add", "a", "--port", "65536"}, "\"65536\" is no number from 1 to 65535"},
    {"PortNegative", {"add", "a", "--port=-1"}, "\"-1\" is no number from 1 to 65535"},
    {"PortLikeOctal", {"add", "a", "--port", "0162"}, "\"0162\" is no number from 1 to 65535"},
    {"PortAWord", {"modify", "1", "--port", "trap"}, "\"trap\" is no number from 1 to 65535"},
    {"Version", {"add", "a", "--version", "2"}, "--version: \"2\" is none of v1, v2c and v3"},
    {"VersionOfModify", {"modify", "1", "--version", "V3"}, "\"V3\" is none of v1, v2c and v3"},
    {"Type", {"add", "a", "--type", "all"}, "--type: \"all\" is none of alarm, no-alarm"},
    {"TypeZero", {"add", "a", "--type", "0"}, "\"0\" is none of alarm"},
    {"IndexZero", {"add", "a", "--index", "0"}, "\"0\" is no number from 1 to 2147483647"},
    {"IndexTooLarge",
     {"add", "a", "--index", "2147483648"},
     "\"2147483648\" is no number from 1 to 2147483647"},
    {"ModifyNothing",
     {"modify", "1"},
     "talvikctl: nothing to change: name --address, --port, --version, --type or --user"},
    {"ModifyNoRow", {"modify", "--port", "162"}, "INDEX is required"},
    {"ModifyIndexZero", {"modify", "0", "--port", "1"}, "\"0\" is no number from 1 to 2147483647"},
    {"ModifyIndexTooLarge",
     {"modify", "2147483648", "--port", "1"},
     "\"2147483648\" is no number from 1 to 2147483647"},
    {"RemoveNothing", {"remove"}, "INDEX is required"},
    {"RemoveAWord", {"remove", "1", "all"}, "\"all\" is no number from 1 to 2147483647"},
    {"RemoveTooLarge", {"remove", "1", "4294967297"}, "\"4294967297\" is no number"},
    {"SnmpVersion",
     {"list", "--snmp-version", "v2c"},
     "--snmp-version: \"v2c\" is none of 1, 2c, 3"},
    {"Level", {"list", "--level", "priv"}, "--level: \"priv\" is none of noAuthNoPriv, authNoPriv"},
    {"AgentOfNoTransport",
     {"list", "--agent", "nonsense:foo"},
     "--agent: \"nonsense:foo\" has no port from 1 to 65535 behind its last colon; an example is"},
    {"AgentWithoutAPort", {"list", "--agent", "udp:127.0.0.1:"}, "\"udp:127.0.0.1:\" has no port"},
    {"AgentPortTooLarge", {"list", "--agent", "udp6:[::1]:65536"}, "has no port from 1 to 65535"},
    {"AgentMistyped", {"list", "--agent", "udp:192.0.2.256:161"}, "is no address of an agent"},
    {"AgentEmpty", {"list", "--agent", ""}, "\"\" is no address of an agent"},
    {"TimeoutZero", {"list", "--timeout", "0"}, "--timeout: Value 0 not in range"},
    {"TimeoutTooLong", {"list", "--timeout", "600001"}, "Value 600001 not in range"},
    {"Retries", {"list", "--retries", "21"}, "--retries: Value 21 not in range"},
    {"OptionOfAnother", {"list", "--port", "162"}, "--port"},
};

class TalvikctlTrapUsage : public testing::TestWithParam<Usage> {};

TEST_P(TalvikctlTrapUsage, IsExplained)
{
    EXPECT_THAT(refused(GetParam().words),
                AllOf(HasSubstr(GetParam().message), HasSubstr("--help")));
}

INSTANTIATE_TEST_SUITE_P(Words, TalvikctlTrapUsage, testing::ValuesIn(kWrong),
                         [](const auto& row) { return row.param.name; });

class TalvikctlTrapCredentials : public testing::Test {
protected:
    /// What `list` says to a user who has nothing but this file and these options.
    std::string refusedWith(const std::string& file, const Words& more = {})
    {
        Words words = {"list", "--snmp-version", "3", "--credentials", file};
        words.insert(words.end(), more.begin(), more.end());
        return refused(words);
    }

    std::string credentials(const std::string& text, mode_t mode = 0600)
    {
        const auto file = dir_.write("credentials.conf", text);
        EXPECT_EQ(::chmod(file.c_str(), mode), 0);
        return file;
    }

    TempDir dir_;
};

TEST_F(TalvikctlTrapCredentials, AreRefusedWhenOthersCanReadOrChangeThem)
{
    for (const mode_t mode : {0604U, 0602U, 0601U, 0620U}) {
        const auto file = credentials("defSecurityName admin\n", mode);
        EXPECT_EQ(refusedWith(file),
                  "talvikctl: the credentials file " + file +
                      " can be read or changed by others; take the access away with chmod 600 and "
                      "choose new passphrases if others had it\n");
    }
}

TEST_F(TalvikctlTrapCredentials, AreRefusedWhenTheyCannotBeRead)
{
    EXPECT_EQ(refusedWith(dir_.path("missing")),
              "talvikctl: cannot read the credentials file " + dir_.path("missing") +
                  ": No such file or directory; name a file that this user may read\n");
    EXPECT_THAT(refusedWith(dir_.path()), HasSubstr("is no regular file"));
}

TEST_F(TalvikctlTrapCredentials, NeedAPassphraseForTheLevel)
{
    const auto file = credentials("defSecurityName admin\n");

    EXPECT_THAT(refusedWith(file, {"--level", "authNoPriv"}),
                HasSubstr("no authentication passphrase: put defAuthPassphrase into"));
}

TEST_F(TalvikctlTrapCredentials, NeedProtocolsThatThereAre)
{
    const auto file = credentials("defSecurityName admin\ndefPassphrase long-enough\n");

    EXPECT_THAT(refusedWith(file, {"--auth-protocol", "ROT13"}),
                HasSubstr("unknown authentication protocol \"ROT13\"; --auth-protocol takes"));
    EXPECT_THAT(refusedWith(file, {"--priv-protocol", "ROT13"}),
                HasSubstr("unknown privacy protocol \"ROT13\"; --priv-protocol takes"));
}

TEST(TalvikctlTrap, HasHelpWithExamplesForEachCommand)
{
    for (const auto* command : {"list", "add", "modify", "remove"}) {
        Program help("talvikctl", {"trap", command, "--help"});
        EXPECT_EQ(help.wait(), 0);
        EXPECT_THAT(help.output(),
                    AllOf(HasSubstr(std::string("Examples:\n  talvikctl trap ") + command),
                          HasSubstr("--credentials FILE")));
    }
}

}  // namespace
