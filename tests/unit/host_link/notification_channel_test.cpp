#include "host/link/notification_channel.h"

#include "tests/support/temp_dir.h"
#include "tests/unit/backend/wire.h"
#include "tests/unit/host_link/link_kit.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using talvik::LoopWatcher;
using talvik::NotificationChannel;
using talvik::test::FakePeer;
using talvik::test::LogCapture;
using talvik::test::Stream;
using talvik::test::TempDir;
using talvik::test::Wire;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Delivery = std::shared_ptr<void>;
using std::chrono::milliseconds;

constexpr std::uint64_t kSubscribe = 4013;
constexpr std::size_t kRequestSize = 38;
constexpr std::size_t kAcknowledgementSize = 28;

/// A channel in the hands of a test, which moves its clock.
class ChannelTest : public testing::Test {
protected:
    std::string path() const { return dir_.path("socket"); }

    /// One turn of the loop: waits for the descriptor, if it is to be read or written.
    void turn()
    {
        bool ready = false;
        if (channel_.descriptor() >= 0 && channel_.deadline() > now_) {
            pollfd watched{channel_.descriptor(), POLLIN, 0};
            watched.events = static_cast<short>(POLLIN | (channel_.wantsToWrite() ? POLLOUT : 0));
            if (::poll(&watched, 1, talvik::test::kWaitMs) != 1) {
                throw std::runtime_error("nothing for the channel to do for too long");
            }
            ready = true;
        }
        channel_.proceed(ready, now_);
    }

    void turnUntilIdle()
    {
        while (channel_.deadline() <= now_) {
            channel_.proceed(false, now_);
        }
    }

    /// The peer's end of a subscribed connection.
    Stream subscribe(FakePeer& peer)
    {
        turn();
        auto stream = peer.accept();
        request_ = stream.receive(kRequestSize);
        stream.send(Wire::refusal(1, 0).bytes());
        turn();
        EXPECT_TRUE(channel_.isSubscribed());
        return stream;
    }

    static Wire notification(std::uint32_t number, std::uint64_t record)
    {
        return Wire::package(3, number, 0xFFFFFFFF, Wire::record(record, Wire()));
    }

    /// What the back end reads next.
    static std::string next(Stream& stream)
    {
        const auto bytes = stream.receive(kAcknowledgementSize);
        return {bytes.begin(), bytes.end()};
    }

    static std::string acknowledgement(std::uint32_t number)
    {
        return Wire::acknowledgement(number).octets();
    }

    TempDir dir_;
    LogCapture log_;
    LoopWatcher::Time now_{std::chrono::hours(1)};
    std::vector<std::uint64_t> taken_;
    std::vector<Delivery> held_;
    bool hold_ = false;
    talvik::backend::Bytes request_;
    NotificationChannel::Limits limits_;
    NotificationChannel channel_{path(), kSubscribe,
                                 [this](const CTLVRecordV3& record, const Delivery& delivery) {
                                     taken_.push_back(record.ullRecordId);
                                     if (hold_) {
                                         held_.push_back(delivery);
                                     }
                                 }};
};

TEST_F(ChannelTest, Subscribes)
{
    FakePeer peer(path());
    const auto stream = subscribe(peer);
    EXPECT_EQ(request_, Wire::request(1, kSubscribe).bytes());
    EXPECT_EQ(channel_.deadline(), LoopWatcher::Time::max());
    EXPECT_EQ(log_.linesWith("come in"), 1);
}

TEST_F(ChannelTest, AcknowledgesWhatIsSettled)
{
    FakePeer peer(path());
    auto stream = subscribe(peer);
    stream.send(notification(1, 77).append(notification(2, 78)).bytes());
    turn();
    EXPECT_THAT(taken_, ElementsAre(77, 78));
    EXPECT_EQ(next(stream), acknowledgement(2));
    EXPECT_EQ(channel_.received(), 2U);
}

TEST_F(ChannelTest, KeepsBackTheAcknowledgementOfWhatIsNotSettled)
{
    FakePeer peer(path());
    auto stream = subscribe(peer);
    hold_ = true;
    stream.send(notification(1, 77).append(notification(2, 78)).bytes());
    turn();
    ASSERT_EQ(held_.size(), 2U);
    EXPECT_EQ(channel_.deadline(), LoopWatcher::Time::max());
    held_.pop_back();
    EXPECT_EQ(channel_.deadline(), LoopWatcher::Time::max()) << "the first is still owed";
    held_.clear();
    EXPECT_LE(channel_.deadline(), now_) << "an acknowledgement is due";
    turn();
    EXPECT_EQ(next(stream), acknowledgement(2));
}

TEST_F(ChannelTest, AcknowledgesTheOldestWhenNothingIsSettledAndTheBackEndWaits)
{
    FakePeer peer(path());
    auto stream = subscribe(peer);
    hold_ = true;
    for (std::uint32_t number = 1; number <= limits_.unacknowledged; ++number) {
        EXPECT_EQ(channel_.deadline(), LoopWatcher::Time::max());
        stream.send(notification(number, 77).bytes());
        turn();
    }
    ASSERT_EQ(taken_.size(), limits_.unacknowledged);

    EXPECT_EQ(channel_.deadline(), now_ + limits_.longestHold);
    EXPECT_EQ(log_.linesWith("count as delivered"), 0);
    now_ += limits_.longestHold;
    turn();
    EXPECT_EQ(next(stream), acknowledgement(limits_.unacknowledged / 2));
    EXPECT_EQ(log_.linesWith("count as delivered"), 1);

    held_.erase(held_.begin(), held_.begin() + 10);
    turnUntilIdle();
    EXPECT_EQ(channel_.deadline(), LoopWatcher::Time::max());
    held_.clear();
    turn();
    EXPECT_EQ(next(stream), acknowledgement(limits_.unacknowledged))
        << "what was acknowledged before needs no other";
}

TEST_F(ChannelTest, TakesABoundedNumberATurn)
{
    FakePeer peer(path());
    auto stream = subscribe(peer);
    Wire all;
    const unsigned count = limits_.recordsATurn + 1;
    for (unsigned number = 1; number <= count; ++number) {
        all.append(notification(number, number));
    }
    stream.send(all.bytes());
    turn();
    EXPECT_EQ(taken_.size(), limits_.recordsATurn);
    EXPECT_LE(channel_.deadline(), now_);
    turnUntilIdle();
    EXPECT_EQ(taken_.size(), count);
}

TEST_F(ChannelTest, TriesAgainWithGrowingPauses)
{
    turn();  // nobody listens
    EXPECT_EQ(log_.linesWith("no notifications from the back end"), 1) << log_.text();
    std::vector<milliseconds> pauses;
    for (int attempt = 0; attempt < 7; ++attempt) {
        const auto due = channel_.deadline();
        pauses.push_back(std::chrono::duration_cast<milliseconds>(due - now_));
        now_ = due;
        channel_.proceed(false, now_);
    }
    EXPECT_THAT(pauses, ElementsAre(milliseconds(100), milliseconds(200), milliseconds(400),
                                    milliseconds(800), milliseconds(1600), milliseconds(2000),
                                    milliseconds(2000)));
    EXPECT_EQ(log_.linesWith("no notifications from the back end"), 1) << "said once";
}

TEST_F(ChannelTest, DoesNothingBeforeThePauseIsOver)
{
    turn();
    const FakePeer peer(path());
    channel_.proceed(false, now_ + milliseconds(99));
    EXPECT_EQ(channel_.descriptor(), -1);
    channel_.proceed(false, now_ + milliseconds(100));
    EXPECT_NE(channel_.descriptor(), -1);
}

TEST_F(ChannelTest, SubscribesAnewWhenTheBackEndCloses)
{
    FakePeer peer(path());
    auto stream = subscribe(peer);
    hold_ = true;
    stream.send(notification(1, 77).bytes());
    turn();
    stream.close();
    turn();
    EXPECT_FALSE(channel_.isSubscribed());
    EXPECT_THAT(log_.text(), HasSubstr("it closed the connection"));

    now_ = channel_.deadline();
    auto again = subscribe(peer);
    held_.clear();  // of the connection that is gone
    EXPECT_EQ(channel_.deadline(), LoopWatcher::Time::max());
    hold_ = false;
    again.send(notification(1, 77).bytes());
    turn();
    EXPECT_THAT(taken_, ElementsAre(77, 77));
    EXPECT_EQ(next(again), acknowledgement(1));
}

TEST_F(ChannelTest, DropsABackEndThatDoesNotAnswerTheSubscription)
{
    FakePeer peer(path());
    turn();
    auto stream = peer.accept();
    EXPECT_EQ(channel_.deadline(), now_ + limits_.subscribe);
    now_ += limits_.subscribe;
    channel_.proceed(false, now_);
    EXPECT_TRUE(stream.closedByPeer());
    EXPECT_THAT(log_.text(), HasSubstr("no answer to the subscription within 5000 ms"));
}

TEST_F(ChannelTest, KnowsWhetherItWorksOnceAnAttemptHasEnded)
{
    FakePeer peer(path());
    EXPECT_EQ(channel_.works(), std::nullopt) << "before the first";
    turn();
    auto silent = peer.accept();
    EXPECT_EQ(channel_.works(), std::nullopt) << "on its way";
    now_ += limits_.subscribe;
    channel_.proceed(false, now_);
    EXPECT_EQ(channel_.works(), false);

    now_ = channel_.deadline();
    auto stream = subscribe(peer);
    EXPECT_EQ(channel_.works(), true);
    stream.close();
    turn();
    EXPECT_EQ(channel_.works(), false);
    now_ = channel_.deadline();
    turn();
    EXPECT_EQ(channel_.works(), false) << "the next attempt has not ended";
}

TEST_F(ChannelTest, TellsWhenAnotherAgentIsSubscribed)
{
    FakePeer peer(path());
    turn();
    auto stream = peer.accept();
    stream.send(Wire::refusal(1, 0x1000017).bytes());
    turn();
    EXPECT_FALSE(channel_.isSubscribed());
    EXPECT_THAT(log_.text(), HasSubstr("another agent takes its notifications"));
}

TEST_F(ChannelTest, TellsANewReason)
{
    turn();  // nobody listens
    EXPECT_EQ(log_.linesWith("cannot connect"), 1) << log_.text();
    FakePeer peer(path());
    now_ = channel_.deadline();
    channel_.proceed(false, now_);
    auto stream = peer.accept();
    stream.send(Wire::refusal(1, 0x1000017).bytes());
    turn();
    EXPECT_EQ(log_.linesWith("another agent takes its notifications"), 1) << log_.text();
}

TEST_F(ChannelTest, DropsABackEndThatRefuses)
{
    FakePeer peer(path());
    turn();
    auto stream = peer.accept();
    stream.send(Wire::refusal(1, 0x1000010).bytes());
    turn();
    EXPECT_THAT(log_.text(), HasSubstr("refuses the subscription with result 16777232"));
}

TEST_F(ChannelTest, PassesOverARecordThatCannotBeRead)
{
    FakePeer peer(path());
    auto stream = subscribe(peer);
    // The record says that it is longer than what there is of it.
    const auto broken = Wire::package(3, 1, 0xFFFFFFFF, Wire().u64(77).u16(500));
    stream.send(Wire(broken).append(notification(2, 78)).bytes());
    turn();
    EXPECT_THAT(taken_, ElementsAre(78));
    EXPECT_EQ(next(stream), acknowledgement(2)) << "it would come for ever otherwise";
    EXPECT_EQ(log_.linesWith("cannot be read and is passed over"), 1) << log_.text();
}

struct BrokenStream {
    const char* name;
    Wire wire;
    const char* reason;
};

class BrokenStreamTest : public ChannelTest, public testing::WithParamInterface<BrokenStream> {};

TEST_P(BrokenStreamTest, EndsTheConnection)
{
    FakePeer peer(path());
    auto stream = subscribe(peer);
    stream.send(GetParam().wire.bytes());
    turn();
    EXPECT_FALSE(channel_.isSubscribed());
    EXPECT_TRUE(stream.closedByPeer());
    EXPECT_THAT(log_.text(), HasSubstr(GetParam().reason));
    EXPECT_THAT(taken_, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    AllOf, BrokenStreamTest,
    testing::Values(BrokenStream{"Kind", Wire::package(2, 1, 0, Wire::record(7, Wire())),
                                 "a message of kind 2 where a notification (3) is due"},
                    BrokenStream{"Number", Wire::package(3, 2, 0, Wire::record(7, Wire())),
                                 "notification 2 where 1 is due"},
                    BrokenStream{"Magic", Wire().u32(1).u32(3).u32(1).u32(0).u32(0).u32(0).u32(0),
                                 "magic"}),
    [](const auto& test) { return test.param.name; });

TEST_F(ChannelTest, ABrokenReplyEndsTheSubscription)
{
    FakePeer peer(path());
    turn();
    auto stream = peer.accept();
    stream.send(Wire::refusal(2, 0).bytes());  // of another exchange
    turn();
    EXPECT_FALSE(channel_.isSubscribed());
    EXPECT_TRUE(stream.receive(kRequestSize).size() == kRequestSize);
    EXPECT_TRUE(stream.closedByPeer());
}

}  // namespace
