#include "host/platform/ares_lookup.h"

#include "host/platform/name_cache_settings.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host_platform/dns_responder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using talvik::AresLookup;
using talvik::AresSettings;
using talvik::LookupAnswer;
using talvik::LookupOutcome;
using talvik::test::DnsReply;
using talvik::test::DnsResponder;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::UnorderedElementsAre;

const std::string kIpv4("\xc0\x00\x02\x01", 4);                             // 192.0.2.1
const std::string kIpv6("\x20\x01\x0d\xb8\0\0\0\0\0\0\0\0\0\0\0\x01", 16);  // 2001:db8::1
const DnsReply kNothing{};
const DnsReply kServerFailure{DnsReply::Answer, 2, "", false};
const DnsReply kNoSuchName{DnsReply::Answer, 3, "", false};
const DnsReply kSilence{DnsReply::Silence, 0, "", false};

/// The records of a host with an address of each family.
DnsReply record(unsigned type)
{
    return {DnsReply::Answer, 0, type == DnsResponder::kA ? kIpv4 : kIpv6, false};
}

DnsReply replyTo(const std::string& name, unsigned type)
{
    const bool ipv4 = type == DnsResponder::kA;
    const std::map<std::string, DnsReply> replies = {
        {"both.test", record(type)},
        {"ipv4.test", ipv4 ? record(type) : kNothing},
        {"ipv6.test", ipv4 ? kNothing : record(type)},
        {"ipv4-only-answers.test", ipv4 ? record(type) : kSilence},
        {"no-address.test", kNothing},
        {"server-failure.test", kServerFailure},
        {"half-failure.test", ipv4 ? kServerFailure : kNothing},
        {"other-half-failure.test", ipv4 ? kNothing : kServerFailure},
        {"half-silence.test", ipv4 ? kSilence : kNothing},
        {"refused.test", {DnsReply::Answer, 5, "", false}},
        {"silence.test", kSilence},
        {"garbage.test", {DnsReply::Garbage, 0, "", false}},
        {"truncated.test", {DnsReply::Answer, 0, "", true}},
    };
    const auto found = replies.find(name);
    return found == replies.end() ? kNoSuchName : found->second;
}

class AresLookupTest : public testing::Test {
protected:
    AresLookupTest() { setServer(responder_); }

    AresSettings settings() const
    {
        AresSettings settings;
        settings.resolvConf = folder_.path("resolv.conf");
        settings.port = responder_.port();
        settings.timeout = 250ms;
        return settings;
    }

    /// What resolv.conf says from now on.
    void setServer(const DnsResponder& server) const
    {
        folder_.write("resolv.conf", "nameserver " + server.host() + "\nsearch elsewhere.test\n");
    }

    void start(AresLookup& lookup, const std::string& name)
    {
        lookup.start(name, [this, name](const LookupAnswer& answer) { answers_[name] = answer; });
    }

    /// Waits until `count` look-ups have ended, for 30 seconds at the longest.
    void waitFor(AresLookup& lookup, std::size_t count)
    {
        const auto end = std::chrono::steady_clock::now() + 30s;
        while (answers_.size() < count && std::chrono::steady_clock::now() < end) {
            lookup.wait(1s);
        }
        ASSERT_THAT(answers_, SizeIs(count));
    }

    LookupAnswer answerFor(const std::string& name)
    {
        AresLookup lookup(settings());
        start(lookup, name);
        waitFor(lookup, 1);
        return answers_[name];
    }

    talvik::test::TempDir folder_;
    DnsResponder responder_{replyTo};
    std::map<std::string, LookupAnswer> answers_;
};

struct Ending {
    const char* title;
    const char* name;
    LookupOutcome outcome;

    friend std::ostream& operator<<(std::ostream& os, const Ending& row) { return os << row.title; }
};

class AresLookupFailure : public AresLookupTest, public testing::WithParamInterface<Ending> {};

}  // namespace

TEST_F(AresLookupTest, FindsTheAddressesOfBothFamilies)
{
    const auto answer = answerFor("both.test");

    EXPECT_EQ(answer.outcome, LookupOutcome::Found);
    EXPECT_THAT(answer.addresses, UnorderedElementsAre("192.0.2.1", "2001:db8::1"));
}

TEST_F(AresLookupTest, OneFamilyIsEnough)
{
    EXPECT_THAT(answerFor("ipv4.test").addresses, ElementsAre("192.0.2.1"));
    answers_.clear();
    EXPECT_THAT(answerFor("ipv6.test").addresses, ElementsAre("2001:db8::1"));
    answers_.clear();
    EXPECT_THAT(answerFor("ipv4-only-answers.test").addresses, ElementsAre("192.0.2.1"));
}

TEST_F(AresLookupTest, ReadsTheHostsFileFirst)
{
    const auto answer = answerFor("localhost");

    EXPECT_THAT(answer.addresses, Contains("127.0.0.1"));
    EXPECT_EQ(responder_.questions("localhost"), 0u);
}

TEST_P(AresLookupFailure, TellsANameThatIsNotThereFromAServerThatCannotSay)
{
    const auto answer = answerFor(GetParam().name);

    EXPECT_EQ(answer.outcome, GetParam().outcome) << answer.reason;
    EXPECT_THAT(answer.addresses, IsEmpty());
    EXPECT_THAT(answer.reason, Not(IsEmpty()));
}

const Ending kEndings[] = {
    {"NoSuchName", "nowhere.test", LookupOutcome::NoSuchName},
    {"NoSuchNameWithADotAtTheEnd", "nowhere.test.", LookupOutcome::NoSuchName},
    {"NoAddress", "no-address.test", LookupOutcome::NoSuchName},
    {"NotAName", "two..dots", LookupOutcome::NoSuchName},
    {"ServerFailure", "server-failure.test", LookupOutcome::NoAnswer},
    {"ServerFailureForIpv4", "half-failure.test", LookupOutcome::NoAnswer},
    {"ServerFailureForIpv6", "other-half-failure.test", LookupOutcome::NoAnswer},
    {"NoAnswerForIpv4", "half-silence.test", LookupOutcome::NoAnswer},
    {"Refused", "refused.test", LookupOutcome::NoAnswer},
    {"Silence", "silence.test", LookupOutcome::NoAnswer},
    {"Garbage", "garbage.test", LookupOutcome::NoAnswer},
    {"TruncatedWithoutTcp", "truncated.test", LookupOutcome::NoAnswer},
};

INSTANTIATE_TEST_SUITE_P(Dns, AresLookupFailure, testing::ValuesIn(kEndings),
                         [](const auto& row) { return row.param.title; });

TEST_F(AresLookupTest, AsksASilentServerAsOftenAsToldAndThenGivesUp)
{
    EXPECT_EQ(answerFor("silence.test").reason, "Timeout while contacting DNS servers");

    EXPECT_EQ(responder_.questions("silence.test"), 4u) << "two tries for each family";
}

TEST_F(AresLookupTest, SeesWhenResolvConfNamesAnotherServer)
{
    const DnsResponder other([](const auto&, unsigned type) { return record(type); }, "127.0.0.2",
                             responder_.port());
    auto impatient = settings();
    impatient.channelAge = 0ms;
    AresLookup lookup(impatient);
    start(lookup, "nowhere.test");
    waitFor(lookup, 1);
    start(lookup, "silence.test");

    setServer(other);
    start(lookup, "new.test");
    waitFor(lookup, 3);

    EXPECT_EQ(answers_["nowhere.test"].outcome, LookupOutcome::NoSuchName);
    EXPECT_EQ(answers_["silence.test"].outcome, LookupOutcome::NoAnswer) << "of the former server";
    EXPECT_EQ(answers_["new.test"].outcome, LookupOutcome::Found);
}

TEST_F(AresLookupTest, KeepsAChannelForAsLongAsItIsYoung)
{
    const DnsResponder other([](const auto&, unsigned type) { return record(type); }, "127.0.0.2",
                             responder_.port());
    AresLookup lookup(settings());
    start(lookup, "both.test");
    waitFor(lookup, 1);

    setServer(other);
    start(lookup, "nowhere.test");
    waitFor(lookup, 2);

    EXPECT_EQ(answers_["nowhere.test"].outcome, LookupOutcome::NoSuchName);
}

TEST_F(AresLookupTest, CompletesAShortNameWithTheSearchListOfResolvConf)
{
    const DnsResponder other(
        [](const std::string& name, unsigned type) {
            return name == "short.elsewhere.test" ? record(type) : kNoSuchName;
        },
        "127.0.0.2", responder_.port());
    setServer(other);

    EXPECT_EQ(answerFor("short").outcome, LookupOutcome::Found);
}

TEST_F(AresLookupTest, AFailureForOneFamilyCountsWhenTheOtherIsSlowToSayNo)
{
    std::atomic<int> asked{0};
    const DnsResponder slow(
        [&asked](const std::string& name, unsigned type) {
            if (name != "host.test") {
                return kNoSuchName;
            }
            const bool ipv4 = type == DnsResponder::kA;
            return ipv4 ? kServerFailure : asked++ == 0 ? kSilence : kNothing;
        },
        "127.0.0.2", responder_.port());
    setServer(slow);

    const auto answer = answerFor("host.test");

    EXPECT_EQ(answer.outcome, LookupOutcome::NoAnswer) << answer.reason;
}

TEST_F(AresLookupTest, LooksUpManyNamesAtATime)
{
    AresLookup lookup(settings());
    for (int i = 0; i < 64; ++i) {
        start(lookup, "nowhere" + std::to_string(i) + ".test");
    }
    start(lookup, "both.test");

    waitFor(lookup, 65);

    EXPECT_EQ(answers_["both.test"].outcome, LookupOutcome::Found);
    EXPECT_EQ(answers_["nowhere63.test"].outcome, LookupOutcome::NoSuchName);
}

TEST_F(AresLookupTest, FeedsANameCacheThatHasMoreNamesThanLookUpsAtATime)
{
    const DnsResponder all([](const auto&, unsigned type) { return record(type); }, "127.0.0.2",
                           responder_.port());
    setServer(all);
    talvik::NameCache::Settings cacheSettings;
    cacheSettings.makeLookup = [this] { return std::make_unique<AresLookup>(settings()); };
    talvik::NameCache cache(cacheSettings);
    for (int i = 0; i < 300; ++i) {
        cache.retain("host" + std::to_string(i) + ".test");
    }

    const auto end = std::chrono::steady_clock::now() + 30s;
    int resolved = 0;
    while (resolved < 300 && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
        resolved += cache.resolves("host" + std::to_string(resolved) + ".test") ? 1 : 0;
    }

    EXPECT_EQ(resolved, 300);
    EXPECT_THAT(cache.addressesOf("host7.test"), UnorderedElementsAre("192.0.2.1", "2001:db8::1"));
}

TEST_F(AresLookupTest, EndsWithLookUpsUnderWayWithoutWaitingOrTelling)
{
    auto patient = settings();
    patient.timeout = 1h;
    auto lookup = std::make_unique<AresLookup>(patient);
    for (int i = 0; i < 100; ++i) {
        start(*lookup, "silence.test");
    }

    lookup.reset();  // an hour for each look-up would be noticed

    EXPECT_THAT(answers_, IsEmpty());
}

TEST_F(AresLookupTest, AWakeUpEndsTheWaitUnderWayOrTheNextOne)
{
    AresLookup lookup(settings());
    lookup.wake();
    lookup.wait(1h);

    std::thread waker([&lookup] { lookup.wake(); });
    lookup.wait(1h);
    waker.join();
}

TEST_F(AresLookupTest, WorksWithDescriptorsBeyondThoseOfSelect)
{
    rlimit former{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &former), 0);
    if (former.rlim_max < 1200) {
        GTEST_SKIP() << "no process may have 1200 open files here";
    }
    rlimit raised{std::max<rlim_t>(former.rlim_cur, 1200), former.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &raised), 0);
    std::vector<int> taken;
    while (taken.empty() || taken.back() < 1024) {
        taken.push_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        ASSERT_GE(taken.back(), 0);
    }

    EXPECT_EQ(answerFor("both.test").outcome, LookupOutcome::Found);

    for (const int fd : taken) {
        ::close(fd);
    }
    ::setrlimit(RLIMIT_NOFILE, &former);
}
