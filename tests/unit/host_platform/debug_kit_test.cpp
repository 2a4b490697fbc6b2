#include "platform/debug_kit.h"

#include "framework/debug_kit_guard.h"
#include "host/platform/debug_kits.h"
#include "host/platform/host_log.h"
#include "host/startup_error.h"
#include "platform/debug_kit_mgr.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::HasSubstr;
using testing::Not;

/// The log goes to a file of the test's own.
class DebugKit : public testing::Test {
protected:
    ~DebugKit() override { talvik::configureLog({}); }

    void logTo(const std::string& level)
    {
        talvik::LogSettings settings;
        settings.level = level;
        settings.file = dir.path("agent.log");
        settings.toStderr = false;
        talvik::configureLog(settings);
    }

    std::string logged() const { return dir.read("agent.log"); }

    talvik::test::TempDir dir;
};

TEST_F(DebugKit, EveryLineCarriesLevelKitCodeLabelLineAndText)
{
    logTo("trace");
    CKELDebugKitGuard guard(4, "f");
    guard.warn(0x1002C, "begin", 17, "alarm %u", 5U);
    guard.error(0x10014, "end", 18, "lost");

    EXPECT_THAT(logged(), HasSubstr(" warning module-4 0x1002C [begin:17] alarm 5\n"));
    EXPECT_THAT(logged(), HasSubstr("error module-4 0x10014 [end:18] lost\n"));
    EXPECT_THAT(logged(), HasSubstr("trace module-4 enter f...\n"));
}

TEST_F(DebugKit, KeepsOnlyTheLevelsAskedFor)
{
    logTo("warn");
    {
        CKELDebugKitGuard guard(4, "f");
        guard.debug(1, "l", 1, "a debug line");
        guard.warn(1, "l", 1, "a warning");
    }
    EXPECT_THAT(logged(), HasSubstr("a warning"));
    EXPECT_THAT(logged(), Not(HasSubstr("a debug line")));
    EXPECT_THAT(logged(), Not(HasSubstr("enter f")));
}

TEST_F(DebugKit, TextFromOutsideCannotPassForALine)
{
    logTo("info");
    CKELDebugKitGuard guard(4, "f");
    guard.error(1, "l", 1, "%s", "name\n2026-01-01 ERROR forged");

    EXPECT_THAT(logged(), HasSubstr("name\n    2026-01-01 ERROR forged\n"));
}

TEST_F(DebugKit, IsOneAModuleIdAndNeverNull)
{
    CKELDebugKitMgr manager;

    EXPECT_NE(manager.find(4), nullptr);
    EXPECT_EQ(manager.find(4), manager.find(4));
    EXPECT_NE(manager.find(4), manager.find(0xFFFFFFFF));
}

TEST_F(DebugKit, TakesLinesFromManyThreads)
{
    logTo("warn");
    talvik::makeDebugKits();
    std::vector<std::thread> threads;
    for (unsigned thread = 0; thread < 8; ++thread) {
        threads.emplace_back([thread] {
            for (unsigned i = 0; i < 50; ++i) {
                CKELDebugKitGuard guard(static_cast<int>(i % 3), "f");
                guard.warn(1, "l", i, "thread %u line %u.", thread, i);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    const auto text = logged();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 400);
    EXPECT_THAT(text, HasSubstr("thread 7 line 49.\n"));
}

TEST_F(DebugKit, ALogFileThatCannotBeOpenedIsNamed)
{
    talvik::LogSettings settings;
    settings.file = dir.write("plain", "") + "/agent.log";

    try {
        talvik::configureLog(settings);
        FAIL() << "accepted";
    } catch (const talvik::StartupError& error) {
        EXPECT_THAT(error.what(), HasSubstr(settings.file));
    }
}

TEST_F(DebugKit, AnUnknownLevelIsRefusedWithTheKnownOnes)
{
    talvik::LogSettings settings;
    settings.level = "loud";

    try {
        talvik::configureLog(settings);
        FAIL() << "accepted";
    } catch (const talvik::StartupError& error) {
        EXPECT_STREQ(error.what(),
                     "unknown log level \"loud\": use one of trace, debug, info, warn, error");
    }
}

TEST_F(DebugKit, AFullLogFileIsRotated)
{
    talvik::LogSettings settings;
    settings.level = "info";
    settings.file = dir.path("agent.log");
    settings.maxFileBytes = 1000;
    settings.maxFiles = 2;
    settings.toStderr = false;
    talvik::configureLog(settings);

    for (int i = 0; i < 100; ++i) {
        talvik::hostLog()->info("line {} that fills the file", i);
    }

    EXPECT_THAT(logged(), HasSubstr("line 99 "));
    EXPECT_THAT(logged(), Not(HasSubstr("line 1 ")));
    EXPECT_TRUE(std::filesystem::exists(dir.path("agent.1.log")));
    EXPECT_FALSE(std::filesystem::exists(dir.path("agent.3.log")));
}

}  // namespace
