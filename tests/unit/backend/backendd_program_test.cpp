#include "tests/support/temp_dir.h"
#include "tests/unit/backend/program.h"
#include "tests/unit/backend/wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace talvik::test;
using testing::HasSubstr;

class BackenddProgram : public testing::Test {
protected:
    std::string path() const { return dir_.path("socket"); }
    std::string ready() const { return "ready, listening on unix:" + path(); }

    std::vector<std::string> arguments(const std::string& stateDir = "state") const
    {
        return {"--socket",         path(),        "--device",
                sampleDeviceFile(), "--state-dir", dir_.path(stateDir)};
    }

    void expectServes() const
    {
        auto client = Stream::connectedTo(path());
        client.send(Wire::request(7, 4001).bytes());
        EXPECT_EQ(client.receive(59), Wire::reply(7, 4001, "2100a1b2c3d4e5f6").bytes());
    }

    /// Runs the program to its end and expects a refusal.
    static void expectRefusal(const std::vector<std::string>& words, int status,
                              const std::string& text)
    {
        Program program("talvik-backendd", words);
        EXPECT_EQ(program.wait(), status);
        EXPECT_THAT(program.output(), HasSubstr(text));
    }

    TempDir dir_;
};

TEST_F(BackenddProgram, ServesUntilASignalAndRemovesItsSocket)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        Program program("talvik-backendd", arguments());
        ASSERT_TRUE(program.printed(ready())) << program.output();
        expectServes();

        program.signal(signal);

        EXPECT_EQ(program.wait(), 0) << program.output();
        EXPECT_FALSE(std::filesystem::exists(path()));
    }
}

TEST_F(BackenddProgram, StartsAgainAfterItWasKilled)
{
    Program killed("talvik-backendd", arguments());
    ASSERT_TRUE(killed.printed(ready())) << killed.output();
    killed.signal(SIGKILL);
    ASSERT_EQ(killed.wait(), -SIGKILL);

    Program program("talvik-backendd", arguments());

    ASSERT_TRUE(program.printed(ready())) << program.output();
    expectServes();
}

TEST_F(BackenddProgram, RefusesToStartBesideAnotherOne)
{
    Program first("talvik-backendd", arguments());
    ASSERT_TRUE(first.printed(ready())) << first.output();

    expectRefusal(arguments("other state"), 1,
                  "another program listens there: stop it or choose another path");
    expectRefusal(arguments(), 1,
                  "the alarms in " + dir_.path("state/alarms.db") +
                      " are in use by another process");

    expectServes();
}

TEST_F(BackenddProgram, KeepsItsAlarmsInTheStateDirectoryAcrossAKill)
{
    auto request = [](std::uint32_t exchange) {
        return Wire::header(1, exchange, 0xFFFFFFFF, 35)
            .u64(4010)
            .u16(25)
            .u16(0x13)
            .u16(8)
            .u64(77)
            .u16(0x23)
            .u16(4)
            .u32(3)
            .u16(0x82)
            .u16(1)
            .text("");
    };
    auto reply = [](std::uint32_t exchange, std::uint32_t serial) {
        return Wire::header(2, exchange, 0, 18).u64(4010).u16(8).u16(0x33).u16(4).u32(serial);
    };
    for (const std::uint32_t serial : {1U, 2U, 3U}) {
        Program program("talvik-backendd", arguments());
        ASSERT_TRUE(program.printed(ready())) << program.output();
        EXPECT_THAT(program.output(), HasSubstr("active alarms: " + std::to_string(serial - 1)));
        auto client = Stream::connectedTo(path());

        client.send(request(serial).bytes());

        EXPECT_EQ(client.receive(46), reply(serial, serial).bytes());
        program.signal(SIGKILL);
        EXPECT_EQ(program.wait(), -SIGKILL);
    }
}

TEST_F(BackenddProgram, NamesTheStateDirectoryThatItCannotUse)
{
    const auto file = dir_.write("file", "");

    expectRefusal({"--socket", path(), "--device", sampleDeviceFile(), "--state-dir", file}, 1,
                  file);
}

TEST_F(BackenddProgram, NamesTheDeviceConfigurationThatItCannotUse)
{
    const auto missing = dir_.path("missing.xml");
    const auto broken = dir_.write("broken.xml", "<device><section");

    expectRefusal({"--socket", path(), "--device", missing}, 1, missing);
    expectRefusal({"--socket", path(), "--device", broken}, 1, broken + ", line 1");
    EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(BackenddProgram, NamesTheLogFileThatItCannotOpen)
{
    auto words = arguments();
    words.insert(words.end(), {"--log-file", dir_.write("file", "") + "/log"});

    expectRefusal(words, 1, dir_.path("file") + "/log");
}

TEST_F(BackenddProgram, LogsToAFileToo)
{
    auto words = arguments();
    words.insert(words.end(), {"--log-file", dir_.path("log")});
    Program program("talvik-backendd", words);
    ASSERT_TRUE(program.printed(ready())) << program.output();
    program.signal(SIGTERM);
    ASSERT_EQ(program.wait(), 0);

    EXPECT_THAT(dir_.read("log"), HasSubstr(ready()));
}

TEST_F(BackenddProgram, ExplainsWrongUsage)
{
    expectRefusal({}, 2, "--socket is required");
    expectRefusal({"--socket", path(), "--log-level", "loud"}, 2, "--log-level");
    expectRefusal({"--socket", path(), "surplus"}, 2, "surplus");
}

TEST_F(BackenddProgram, TellsVersionAndHelp)
{
    Program version("talvik-backendd", {"--version"});
    EXPECT_EQ(version.wait(), 0);
    EXPECT_THAT(version.output(), HasSubstr("talvik-backendd 0."));

    Program help("talvik-backendd", {"--help"});
    EXPECT_EQ(help.wait(), 0);
    EXPECT_THAT(help.output(), HasSubstr("--socket PATH"));
}

}  // namespace
