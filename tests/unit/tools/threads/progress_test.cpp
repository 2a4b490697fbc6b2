#include "tools/progress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>

namespace {

using namespace talvik::ctl;
using std::chrono::milliseconds;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr Progress::Pace kAtOnce{milliseconds(0), milliseconds(1)};
constexpr Progress::Pace kNever{std::chrono::hours(1), milliseconds(1)};
constexpr auto kLimit = std::chrono::seconds(30);

/// What a terminal got.
class Screen {
public:
    Progress::Write writer()
    {
        return [this](const std::string& text) {
            const std::lock_guard<std::mutex> lock(mutex_);
            text_ += text;
            written_.notify_all();
        };
    }

    bool shows(const std::string& part)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        return written_.wait_for(lock, kLimit,
                                 [&] { return text_.find(part) != std::string::npos; });
    }

    std::string text()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return text_;
    }

private:
    std::mutex mutex_;
    std::condition_variable written_;
    std::string text_;
};

TEST(ProgressLine, IsWrittenOverItselfAndTakenAway)
{
    Screen screen;
    Progress progress(screen.writer(), kAtOnce);
    progress.allow(true);
    {
        const Progress::Span span("reading", progress);
        EXPECT_TRUE(screen.shows("\r\x1B[Kreading, 0 s"));
        progress.tell("step\n 2");
        EXPECT_TRUE(screen.shows("\r\x1B[Kstep\\x0A 2, 0 s"));
    }

    EXPECT_THAT(screen.text(), EndsWith("\r\x1B[K"));
}

TEST(ProgressLine, MakesWayForWhatIsPrinted)
{
    Screen screen;
    Progress progress(screen.writer(), kAtOnce);
    progress.allow(true);
    const Progress::Span span("reading", progress);
    ASSERT_TRUE(screen.shows("reading"));

    progress.around([&] { screen.writer()("a line\n"); });

    EXPECT_THAT(screen.text(), HasSubstr("\r\x1B[Ka line\n"));
}

TEST(ProgressLine, StaysAwayOnceItIsFinished)
{
    Screen screen;
    {
        Progress progress(screen.writer(), kAtOnce);
        progress.allow(true);
        const Progress::Span span("reading", progress);
        ASSERT_TRUE(screen.shows("reading"));
        progress.finish();
        screen.writer()("done\n");
    }

    EXPECT_THAT(screen.text(), EndsWith("\r\x1B[Kdone\n"));
}

TEST(ProgressLine, SaysWhatTheOutermostTaskIs)
{
    Screen screen;
    Progress progress(screen.writer(), kAtOnce);
    progress.allow(true);
    const Progress::Span outer("the list", progress);
    {
        const Progress::Span inner("a page", progress);
    }

    EXPECT_TRUE(screen.shows("the list"));
    EXPECT_THAT(screen.text(), Not(HasSubstr("a page")));
}

TEST(ProgressLine, IsNotShownForWhatIsDoneSoon)
{
    Screen screen;
    {
        Progress progress(screen.writer(), kNever);
        progress.allow(true);
        const Progress::Span span("reading", progress);
    }

    EXPECT_EQ(screen.text(), "");
}

TEST(ProgressLine, IsNotShownUnlessItMayBe)
{
    Screen screen;
    {
        Progress progress(screen.writer(), kAtOnce);
        const Progress::Span span("reading", progress);
        progress.around([&] { screen.writer()("a line\n"); });
    }

    EXPECT_EQ(screen.text(), "a line\n");
}

}  // namespace
