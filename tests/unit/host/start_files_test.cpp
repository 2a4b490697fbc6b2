#include "host/start_files.h"

#include "tests/support/temp_dir.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

class StartFilesOf : public testing::Test {
protected:
    std::vector<std::string> report() const
    {
        const talvik::test::LoggerCapture log("host");
        files.report();
        return log.lines();
    }

    static std::string unchanged(const std::string& file)
    {
        return "SIGHUP: " + file + ": unchanged";
    }

    static std::string changed(const std::string& file)
    {
        return "SIGHUP: " + file +
               ": has changed; it is read at the start only, restart the agent to take it over";
    }

    const talvik::test::TempDir folder;
    const std::string one = folder.write("one", "1");
    const std::string two = folder.write("two", "2");
    talvik::StartFiles files;
};

TEST_F(StartFilesOf, AreToldInTheirOrder)
{
    files.add(two);
    files.add(one);

    EXPECT_THAT(report(), ElementsAre(unchanged(two), unchanged(one)));
}

TEST_F(StartFilesOf, OtherSizesAreAChangeUntilTheFileIsBack)
{
    files.add(one);
    const auto written = std::filesystem::last_write_time(one);

    folder.write("one", "12");
    EXPECT_THAT(report(), ElementsAre(changed(one)));
    EXPECT_THAT(report(), ElementsAre(changed(one))) << "the agent still has the former";

    folder.write("one", "1");
    std::filesystem::last_write_time(one, written);
    EXPECT_THAT(report(), ElementsAre(unchanged(one)));
}

TEST_F(StartFilesOf, AnotherTimeOfWritingIsAChange)
{
    files.add(one);

    std::filesystem::last_write_time(one, std::filesystem::last_write_time(one) +
                                              std::chrono::nanoseconds(1));

    EXPECT_THAT(report(), ElementsAre(changed(one)));
}

TEST_F(StartFilesOf, AFilePutInItsPlaceIsAChange)
{
    files.add(one);
    std::filesystem::last_write_time(two, std::filesystem::last_write_time(one));

    std::filesystem::rename(two, one);

    EXPECT_THAT(report(), ElementsAre(changed(one)));
}

TEST_F(StartFilesOf, AFileThatIsGoneOrHasComeIsAChange)
{
    const auto late = folder.path("late");
    const auto never = folder.path("never");
    for (const auto& file : {one, late, never}) {
        files.add(file);
    }

    std::filesystem::remove(one);
    folder.write("late", "");

    EXPECT_THAT(report(), ElementsAre(changed(one), changed(late), unchanged(never)));
}

TEST_F(StartFilesOf, AFileThatIsNamedTwiceIsWhatItWasFirst)
{
    files.add(one);
    folder.write("one", "12");
    files.add(one);

    EXPECT_THAT(report(), ElementsAre(changed(one)));
}

}  // namespace
