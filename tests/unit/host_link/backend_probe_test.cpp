#include "host/link/backend_probe.h"

#include "tests/support/temp_dir.h"
#include "tests/unit/backend/wire.h"
#include "tests/unit/host_link/link_kit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

using namespace std::chrono_literals;
using talvik::BackendProbe;
using talvik::LoopWatcher;
using talvik::test::FakePeer;
using talvik::test::Stream;
using talvik::test::TempDir;
using talvik::test::Wire;

constexpr std::uint64_t kCommand = 4001;
constexpr std::size_t kRequestSize = 38;
constexpr auto kNever = LoopWatcher::Time::max();

/// A probe in the hands of a test, which moves its clock. The back end has just left a command
/// without an answer.
class BackendProbeOf : public testing::Test {
protected:
    std::string path() const { return dir_.path("socket"); }

    /// Its deadline has come.
    void proceed()
    {
        now_ = std::max(now_, probe_.deadline());
        probe_.proceed(false, now_);
    }

    /// What it waits for has come.
    void proceedWhenReady()
    {
        pollfd watched{probe_.descriptor(), POLLIN, 0};
        if (probe_.descriptor() < 0 || ::poll(&watched, 1, talvik::test::kWaitMs) != 1) {
            throw std::runtime_error("nothing for the probe to read for too long");
        }
        probe_.proceed(true, now_);
    }

    /// The back end's end of a connection with a request on it.
    Stream asked(FakePeer& peer)
    {
        proceed();
        auto stream = peer.accept();
        EXPECT_EQ(stream.receive(kRequestSize), Wire::request(1, kCommand).bytes());
        return stream;
    }

    TempDir dir_;
    LoopWatcher::Time now_{1h};
    std::optional<LoopWatcher::Time> silentSince_{now_};
    int answers_ = 0;
    BackendProbe probe_{path(), kCommand, [this] { return silentSince_; },
                        [this] {
                            ++answers_;
                            silentSince_.reset();
                        }};
};

TEST_F(BackendProbeOf, AsksNothingWhileTheBackEndAnswers)
{
    FakePeer peer(path());
    silentSince_.reset();

    EXPECT_EQ(probe_.deadline(), kNever);
    probe_.proceed(false, now_);

    EXPECT_EQ(probe_.descriptor(), -1);
    EXPECT_FALSE(peer.hasPending());
}

TEST_F(BackendProbeOf, AsksAPauseAfterTheCommandAndWaitsForAsLongAsItTakes)
{
    FakePeer peer(path());

    EXPECT_EQ(probe_.deadline(), now_ + BackendProbe::kPause);
    auto stream = asked(peer);

    EXPECT_EQ(probe_.deadline(), kNever) << "one question at a time";
    now_ += 1h;
    probe_.proceed(false, now_);
    EXPECT_FALSE(peer.hasPending());
    EXPECT_EQ(answers_, 0);
    stream.send(Wire::reply(1, kCommand, "it is back").bytes());
    proceedWhenReady();
    EXPECT_EQ(answers_, 1);
    EXPECT_EQ(probe_.descriptor(), -1);
    EXPECT_EQ(probe_.deadline(), kNever);
}

TEST_F(BackendProbeOf, TakesARefusalForAnAnswer)
{
    FakePeer peer(path());
    auto stream = asked(peer);

    stream.send(Wire::refusal(1, 7).bytes());
    proceedWhenReady();

    EXPECT_EQ(answers_, 1);
}

TEST_F(BackendProbeOf, TriesAgainAPauseAfterAFailure)
{
    proceed();  // nobody listens
    EXPECT_EQ(probe_.descriptor(), -1);
    EXPECT_EQ(probe_.deadline(), now_ + BackendProbe::kPause);

    FakePeer peer(path());
    {
        const auto closedAtOnce = asked(peer);
    }
    proceedWhenReady();
    EXPECT_EQ(probe_.deadline(), now_ + BackendProbe::kPause);

    auto stream = asked(peer);
    stream.send(Wire::reply(2, kCommand, "to somebody else").bytes());
    proceedWhenReady();
    EXPECT_EQ(answers_, 0);
    EXPECT_EQ(probe_.deadline(), now_ + BackendProbe::kPause);
}

TEST_F(BackendProbeOf, GivesUpAsSoonAsACommandWasAnswered)
{
    FakePeer peer(path());
    const auto stream = asked(peer);

    silentSince_.reset();

    EXPECT_LE(probe_.deadline(), now_);
    probe_.proceed(false, now_);
    EXPECT_EQ(probe_.descriptor(), -1);
    EXPECT_EQ(probe_.deadline(), kNever);
    EXPECT_EQ(answers_, 0);
}

}  // namespace
