#include "host/reload.h"

#include "host/start_files.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::string kBegin = "SIGHUP: reading again what can be read while the agent runs";
const std::string kEnd = "SIGHUP: options of the command line, listening addresses and the state "
                         "directory stay as they are until a restart";

/// What the parts say is in the log's place of theirs.
class ReloadOf : public testing::Test {
protected:
    ~ReloadOf() override { talvik::configureLog({}); }

    std::vector<std::string> run()
    {
        const talvik::test::LoggerCapture capture("host");
        talvik::Reload(log, files,
                       {[] { talvik::hostLog()->info("agent configuration"); },
                        [] { talvik::hostLog()->info("trap settings"); }, [this] { ++done; }})
            .run();
        return capture.lines();
    }

    const talvik::test::TempDir folder;
    talvik::LogSettings log;
    talvik::StartFiles files;
    int done = 0;
};

TEST_F(ReloadOf, ReadsEverythingOnceAndSaysSo)
{
    files.add(folder.write("device.xml", "device"));

    EXPECT_THAT(run(), ElementsAre(kBegin, "agent configuration", "trap settings",
                                   HasSubstr("device.xml: unchanged"), kEnd));
    EXPECT_EQ(done, 1);
}

TEST_F(ReloadOf, OpensTheLogFileAnewBeforeAnythingElse)
{
    log.file = folder.path("agent.log");
    talvik::configureLog(log);
    std::filesystem::rename(log.file, folder.path("moved.log"));

    const auto lines = run();

    EXPECT_THAT(lines, ElementsAre("SIGHUP: log file " + log.file + ": opened anew", kBegin,
                                   "agent configuration", "trap settings", kEnd));
    EXPECT_EQ(folder.read("moved.log"), "");
    EXPECT_THAT(folder.read("agent.log"), HasSubstr(kEnd));
}

TEST_F(ReloadOf, GoesOnWithTheFormerLogFileWhereItCannotBeOpened)
{
    log.file = folder.path("agent.log");
    talvik::configureLog(log);
    std::filesystem::rename(log.file, folder.path("moved.log"));
    std::filesystem::create_directory(log.file);

    const auto lines = run();

    EXPECT_THAT(lines, ElementsAre(HasSubstr("; lines go on to the file that was open"), kBegin,
                                   "agent configuration", "trap settings", kEnd));
    EXPECT_THAT(folder.read("moved.log"), HasSubstr(kEnd));
    EXPECT_EQ(done, 1);
}

}  // namespace
