#include "tests/support/temp_dir.h"
#include "tests/unit/backend/program.h"
#include "tests/unit/backend/wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace talvik::test;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

class TalvikctlStatus : public testing::Test {
protected:
    std::string path() const { return dir_.path("socket"); }

    /// Runs `talvikctl backend status` for the socket of this test; returns its exit status.
    int status(const std::vector<std::string>& more = {},
               const std::string& device = sampleDeviceFile())
    {
        std::vector<std::string> words = {"backend", "status",   "--socket",
                                          path(),    "--device", device};
        words.insert(words.end(), more.begin(), more.end());
        Program program("talvikctl", words);
        const int result = program.wait();
        output_ = program.output();
        return result;
    }

    TempDir dir_;
    std::string output_;
};

class TalvikctlStatusUp : public TalvikctlStatus {
protected:
    TalvikctlStatusUp()
        : backend_("talvik-backendd", {"--socket", path(), "--device", sampleDeviceFile(),
                                       "--state-dir", dir_.path("state")})
    {
        if (!backend_.printed("ready, listening")) {
            throw std::runtime_error(backend_.output());
        }
    }

    Program backend_;
};

TEST_F(TalvikctlStatusUp, PrintsATable)
{
    EXPECT_EQ(status(), 0);

    EXPECT_THAT(output_, MatchesRegex("socket      " + path() + "\nstate       up\n" +
                                      "WWN         2100a1b2c3d4e5f6\n" +
                                      "round trip  [0-9]+[.][0-9]+ ms\n"));
}

TEST_F(TalvikctlStatusUp, PrintsJson)
{
    EXPECT_EQ(status({"--json"}), 0);

    EXPECT_THAT(output_,
                AllOf(HasSubstr("\"state\" : \"up\""), HasSubstr("\"socket\" : \"" + path()),
                      HasSubstr("\"wwn\" : \"2100a1b2c3d4e5f6\""),
                      HasSubstr("\"roundTripMs\" : ")));
}

TEST_F(TalvikctlStatusUp, TellsThatTheDeviceConfigurationsDiffer)
{
    const auto other =
        dir_.write("other.xml", "<device><section name='COMMAND'><item "
                                "name='GET_SYSTEM_WWN' value='4711'/></section></device>");

    EXPECT_EQ(status({}, other), 1);

    EXPECT_THAT(output_, AllOf(HasSubstr("state       down"),
                               HasSubstr("refused GET_SYSTEM_WWN (4711) with code 0x1000010"),
                               HasSubstr("name the socket of talvik-backendd with --socket if the "
                                         "agent uses one"),
                               HasSubstr("same device configuration as " + other)));
}

TEST_F(TalvikctlStatus, TellsHowToStartABackEndThatIsNotThere)
{
    EXPECT_EQ(status(), 3);

    EXPECT_EQ(output_,
              "socket      " + path() +
                  "\nstate       down\nreason      cannot connect: No such file or directory\n"
                  "to do       start talvik-backendd --socket " +
                  path() +
                  " or name the socket that it listens on; the user must be its own or root\n");
}

TEST_F(TalvikctlStatus, PrintsJsonWithReasonAndAdviceWhenItIsDown)
{
    EXPECT_EQ(status({"--json"}), 3);

    EXPECT_THAT(output_,
                AllOf(HasSubstr("\"state\" : \"down\""), HasSubstr("\"reason\" : \"cannot"),
                      HasSubstr("\"advice\" : \"start talvik-backendd"), Not(HasSubstr("wwn"))));
}

TEST_F(TalvikctlStatus, GivesUpOnABackEndThatHangs)
{
    const talvik::backend::ListeningSocket hung(path());

    EXPECT_EQ(status({"--timeout", "50"}), 3);

    EXPECT_THAT(output_, AllOf(HasSubstr("it did not answer within 50 ms"),
                               HasSubstr("restart it if it hangs")));
}

TEST_F(TalvikctlStatus, RefusesADeviceConfigurationThatItCannotUse)
{
    EXPECT_EQ(status({}, dir_.path("missing.xml")), 2);
    EXPECT_THAT(output_, HasSubstr("talvikctl: cannot read the device configuration " +
                                   dir_.path("missing.xml")));
}

TEST(Talvikctl, NamesTheCommandsWhereAWordIsNone)
{
    Program top("talvikctl", {"frobnicate"});
    EXPECT_EQ(top.wait(), 2);
    EXPECT_EQ(top.output(), "talvikctl: \"frobnicate\" is no command of talvikctl; it is one of "
                            "alarm, backend, catalogue, completion, help, package, trap, watch; "
                            "talvikctl --help shows what they do\n");

    Program nearMiss("talvikctl", {"alarm", "lst", "--limit", "3"});
    EXPECT_EQ(nearMiss.wait(), 2);
    EXPECT_EQ(
        nearMiss.output(),
        "talvikctl: \"lst\" is no command of talvikctl alarm; it is one of list, raise, event, "
        "clear, resend, scenario; perhaps list is meant; talvikctl alarm --help shows what "
        "they do\n");

    Program json("talvikctl", {"--json", "alarm", "lst"});
    EXPECT_EQ(json.wait(), 2);
    EXPECT_THAT(json.output(),
                AllOf(HasSubstr("\"reason\" : \"\\\"lst\\\" is no command of talvikctl alarm;"),
                      HasSubstr("\"advice\" : \"perhaps list is meant; ")));
}

TEST(Talvikctl, RefusesASocketPathThatCannotBe)
{
    Program program("talvikctl", {"backend", "status", "--socket", std::string(200, 'x')});
    EXPECT_EQ(program.wait(), 2);
    EXPECT_THAT(program.output(), HasSubstr("choose a shorter one"));
}

TEST(Talvikctl, ExplainsWrongUsage)
{
    const std::vector<std::vector<std::string>> wrong = {
        {}, {"backend"}, {"frontend"}, {"backend", "status"}, {"backend", "status", "--socket"}};
    for (const auto& words : wrong) {
        Program program("talvikctl", words);
        EXPECT_EQ(program.wait(), 2);
        EXPECT_THAT(program.output(), HasSubstr("--help"));
    }
}

TEST(Talvikctl, TellsVersionAndHelpWithExamples)
{
    Program version("talvikctl", {"--version"});
    EXPECT_EQ(version.wait(), 0);
    EXPECT_THAT(version.output(), HasSubstr("talvikctl 0."));

    Program help("talvikctl", {"backend", "status", "--help"});
    EXPECT_EQ(help.wait(), 0);
    EXPECT_THAT(help.output(), AllOf(HasSubstr("Examples:"), HasSubstr("--timeout MS")));
}

}  // namespace
