#include "host/platform/host_log.h"

#include "host/startup_error.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <thread>

namespace {

using testing::HasSubstr;
using testing::Not;

class HostLogIn : public testing::Test {
protected:
    HostLogIn()
    {
        settings.file = folder.path("agent.log");
        settings.toStderr = false;
        settings.maxFileBytes = std::size_t{1} << 30U;
        talvik::configureLog(settings);
    }

    ~HostLogIn() override { talvik::configureLog({}); }

    static std::ptrdiff_t openDescriptors()
    {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }

    const talvik::test::TempDir folder;
    talvik::LogSettings settings;
};

TEST_F(HostLogIn, AFileIsOpenedAnewAfterItWasMoved)
{
    talvik::hostLog()->info("before");
    std::filesystem::rename(settings.file, folder.path("moved"));

    talvik::configureLog(settings);
    talvik::hostLog()->info("after");

    EXPECT_THAT(folder.read("moved"), HasSubstr(" info host before\n"));
    EXPECT_THAT(folder.read("moved"), Not(HasSubstr("after")));
    EXPECT_THAT(folder.read("agent.log"), HasSubstr(" info host after\n"));
}

TEST_F(HostLogIn, AFileThatCannotBeOpenedLeavesTheFormerInUse)
{
    std::filesystem::rename(settings.file, folder.path("moved"));
    std::filesystem::create_directory(settings.file);

    EXPECT_THROW(talvik::configureLog(settings), talvik::StartupError);
    talvik::hostLog()->info("after");

    EXPECT_THAT(folder.read("moved"), HasSubstr(" info host after\n"));
}

TEST_F(HostLogIn, AFileLeaksNoDescriptor)
{
    const auto before = openDescriptors();

    for (int i = 0; i < 20; ++i) {
        talvik::configureLog(settings);
    }
    EXPECT_EQ(openDescriptors(), before);

    std::filesystem::remove(settings.file);
    std::filesystem::create_directory(settings.file);
    EXPECT_THROW(talvik::configureLog(settings), talvik::StartupError);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(HostLogIn, AFileHasWholeLinesOfOneFormWhileItIsOpenedAnew)
{
    std::atomic<bool> ended{false};
    std::atomic<int> written{0};
    std::thread other([&] {
        while (!ended) {
            talvik::hostLog()->info("line {}", ++written);
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 100; ++i) {
        const int before = written;
        talvik::configureLog(settings);
        while (written < before + 2) {
            std::this_thread::yield();
        }
    }
    ended = true;
    other.join();

    const std::regex form(R"(\d{4}-\d\d-\d\dT\S+ info host line \d+)");
    std::istringstream text(folder.read("agent.log"));
    int lines = 0;
    for (std::string line; std::getline(text, line); ++lines) {
        ASSERT_TRUE(std::regex_match(line, form)) << line;
    }
    EXPECT_EQ(lines, written);
}

}  // namespace
