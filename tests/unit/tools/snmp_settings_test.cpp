#include "tools/snmp_settings.h"

#include "host/installation_paths.h"
#include "tests/unit/backend/program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using talvik::InstallationPaths;
using talvik::ctl::SnmpSettings;
using talvik::ctl::usualAgent;
using talvik::test::Program;
using testing::HasSubstr;
using testing::Not;

TEST(UsualAgent, OfTheSystemHasThePortOfSnmp)
{
    EXPECT_EQ(usualAgent(InstallationPaths("/usr/bin")), "udp:127.0.0.1:161");
}

TEST(UsualAgent, OfAnyOtherInstallationHasAPortWithoutPrivilege)
{
    for (const auto* folder :
         {"/usr/local/bin", "/opt/talvik/bin", "/src/talvik/build/release/bin"}) {
        EXPECT_EQ(usualAgent(InstallationPaths(folder)), "udp:127.0.0.1:1161") << folder;
    }
}

TEST(UsualAgent, IsAskedWhereNoneIsNamed)
{
    EXPECT_EQ(SnmpSettings().agent, usualAgent(InstallationPaths::ofThisProgram()));
}

TEST(UsualAgent, IsShownInTheHelpButNotOnPagesThatAreForAllInstallations)
{
    Program help("talvikctl", {"trap", "list", "--help"});
    EXPECT_EQ(help.wait(), 0);
    EXPECT_THAT(help.output(), HasSubstr("--agent ADDRESS=udp:127.0.0.1:1161"));

    Program page("talvikctl", {"help", "trap", "list", "--format", "markdown"});
    EXPECT_EQ(page.wait(), 0);
    EXPECT_THAT(page.output(), HasSubstr("with the packages, else udp:127.0.0.1:1161 |"));
    EXPECT_THAT(page.output(), Not(HasSubstr("default: udp:")));
}

}  // namespace
