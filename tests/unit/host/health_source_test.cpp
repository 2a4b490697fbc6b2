#include "host/health_source.h"

#include "tests/unit/host/health_kit.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using talvik::AgentHealth;
using talvik::HealthSource;
using talvik::LoopWatcher;
using talvik::test::ManualHealthClock;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Backend = AgentHealth::Backend;

class HealthOf : public testing::Test {
protected:
    HealthOf()
    {
        source.follow([this](AgentHealth& health) { health.objects = objects; });
        source.follow([this](AgentHealth& health) {
            health.receivers = receivers;
            health.notificationsTaken = taken;
            health.traps = traps;
        });
        source.followNotifications([this] { return subscription; });
    }

    Backend backend() const { return source.now().backend; }

    /// What is logged when the time has come.
    std::vector<std::string> nextHour()
    {
        clock.advance(1h);
        EXPECT_LE(source.deadline(), clock.steady());
        const auto before = log.lines().size();
        source.proceed(false, clock.steady());
        auto lines = log.lines();
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
        return lines;
    }

    ManualHealthClock clock;
    std::vector<talvik::ServedObject> objects{{"one", {1, 2}, false, {}},
                                              {"two", {1, 3}, true, {}}};
    std::uint64_t receivers = 0;
    std::uint64_t taken = 0;
    talvik::TrapTotals traps;
    HealthSource::Subscription subscription;
    HealthSource source{{"1.2.3", "/a/module.so", "unix:/b.sock", false}, clock.clock()};
    talvik::test::LoggerCapture log{"host"};
};

TEST_F(HealthOf, AnAgentHasItsFactsAndTimes)
{
    const auto started = clock.date();
    clock.advance(5s);
    EXPECT_EQ(source.now().reloaded, std::nullopt);
    source.reloaded();
    clock.advance(5s);

    const auto health = source.now();

    EXPECT_EQ(health.version, "1.2.3");
    EXPECT_EQ(health.moduleFile, "/a/module.so");
    EXPECT_EQ(health.backendName, "unix:/b.sock");
    EXPECT_EQ(health.started, started);
    EXPECT_EQ(health.reloaded, started + 5);
    EXPECT_EQ(health.module, AgentHealth::Module::Missing);
    source.setModuleLoaded(true);
    EXPECT_EQ(source.now().module, AgentHealth::Module::Loaded);
}

TEST_F(HealthOf, TheLinkIsItsCounters)
{
    source.link().add(true);
    const auto answered = clock.date();
    clock.advance(3s);
    source.link().add(false);

    const auto health = source.now();

    EXPECT_EQ(health.backendCommands, 2U);
    EXPECT_EQ(health.backendFailures, 1U);
    EXPECT_EQ(health.backendAnswered, answered);
}

TEST_F(HealthOf, OthersIsWhatTheyReportNow)
{
    receivers = 3;
    taken = 4;
    traps.givenUp = 5;

    const auto health = source.now();

    EXPECT_EQ(health.receivers, 3U);
    EXPECT_EQ(health.notificationsTaken, 4U);
    EXPECT_EQ(health.traps.givenUp, 5U);
    EXPECT_EQ(health.objects.size(), 2U);
}

TEST_F(HealthOf, ABackEndIsUnknownUntilAnythingIsKnownOfIt)
{
    EXPECT_EQ(backend(), Backend::Unknown);
    source.setModuleLoaded(true);
    EXPECT_EQ(backend(), Backend::Unknown) << "with a module as without";

    subscription.works = false;
    EXPECT_EQ(backend(), Backend::Down) << "it was not there when notifications were asked for";
}

TEST_F(HealthOf, ABackEndIsAsTheLatestCommandTellsWhileNothingIsKnownOfNotifications)
{
    source.link().add(true);
    EXPECT_EQ(backend(), Backend::Up);
    source.link().add(false);
    EXPECT_EQ(backend(), Backend::Down);
    source.link().add(true);
    EXPECT_EQ(backend(), Backend::Up);
}

TEST_F(HealthOf, ABackEndWhoseNotificationsDoNotComeIsDownWhateverItAnswers)
{
    subscription.works = false;
    source.link().add(true);
    EXPECT_EQ(backend(), Backend::Down);
    subscription = {true, clock.steady()};
    EXPECT_EQ(backend(), Backend::Up);
    subscription.works = false;
    EXPECT_EQ(backend(), Backend::Down);
}

TEST_F(HealthOf, ABackEndThatFailsAfterItsNotificationsCameIsDownUntilItAnswers)
{
    subscription = {true, clock.steady()};
    EXPECT_EQ(backend(), Backend::Up) << "before the first exchange";

    clock.advance(1s);
    source.link().add(false);
    EXPECT_EQ(backend(), Backend::Down);

    source.link().add(true);
    EXPECT_EQ(backend(), Backend::Up);
}

TEST_F(HealthOf, ABackEndWhoseNotificationsCameAgainSinceItFailedIsUp)
{
    source.link().add(false);
    subscription = {true, clock.steady()};
    EXPECT_EQ(backend(), Backend::Down) << "at the same moment";

    clock.advance(1s);
    subscription.since = clock.steady();

    EXPECT_EQ(backend(), Backend::Up);
}

TEST_F(HealthOf, ABackEndIsSilentWhileOnlyAnotherAnswerCanBringItUp)
{
    EXPECT_EQ(source.backendSilentSince(), std::nullopt) << "before the first exchange";
    source.link().add(false);
    EXPECT_EQ(source.backendSilentSince(), clock.steady()) << "with no notifications to go by";

    subscription.works = false;
    EXPECT_EQ(source.backendSilentSince(), std::nullopt) << "notifications are asked for anyway";

    subscription = {true, clock.steady()};
    EXPECT_EQ(source.backendSilentSince(), clock.steady());
    const auto commands = source.now().backendCommands;
    source.link().noteAnswer();
    EXPECT_EQ(source.backendSilentSince(), std::nullopt);
    EXPECT_EQ(backend(), Backend::Up);
    EXPECT_EQ(source.now().backendCommands, commands);
    EXPECT_EQ(source.now().backendAnswered, std::nullopt) << "no command was";
}

TEST_F(HealthOf, AnEmbeddedBackEndIsNeverAway)
{
    HealthSource embedded({"1.2.3", "/a/module.so", "embedded", true}, clock.clock());
    embedded.setModuleLoaded(true);

    embedded.link().add(false);

    EXPECT_EQ(embedded.now().backend, Backend::Embedded);
    EXPECT_EQ(embedded.backendSilentSince(), std::nullopt);
}

TEST_F(HealthOf, NobodyElseIsNoFault)
{
    const HealthSource alone({"1.2.3", "/a/module.so", "unix:/b.sock", false}, clock.clock());

    const auto health = alone.now();

    EXPECT_EQ(health.master, AgentHealth::Master::None);
    EXPECT_THAT(health.objects, IsEmpty());
    EXPECT_EQ(health.backend, Backend::Unknown);
}

TEST_F(HealthOf, TheStartIsOneLine)
{
    receivers = 7;
    EXPECT_EQ(source.deadline(), LoopWatcher::Time::max()) << "no hours before it";
    source.start();

    source.setModuleLoaded(true);
    source.start();

    EXPECT_THAT(log.lines(), ElementsAre("talvik-agentd 1.2.3, module /a/module.so missing, back "
                                         "end unix:/b.sock, objects: 2, trap receivers: 7",
                                         HasSubstr("module /a/module.so loaded, ")));
}

TEST_F(HealthOf, APathCannotLookLikeALineOfItsOwn)
{
    HealthSource strange({"1.2.3", "/a\nb", "unix:/c\nd", false}, clock.clock());

    strange.start();

    EXPECT_THAT(log.lines(),
                ElementsAre("talvik-agentd 1.2.3, module /a", "    b missing, back end unix:/c",
                            "    d, objects: 0, trap receivers: 0"));
}

TEST_F(HealthOf, AnHourWithoutAChangeIsSilent)
{
    source.link().add(true);
    source.start();
    EXPECT_EQ(source.deadline(), clock.steady() + 1h);

    EXPECT_THAT(nextHour(), IsEmpty());
    EXPECT_EQ(source.deadline(), clock.steady() + 1h) << "and the next one counts from here";
    EXPECT_THAT(nextHour(), IsEmpty());
}

TEST_F(HealthOf, AnHourWithAChangeIsOneLineWithAllCounters)
{
    source.start();
    objects[0].counters = {10, 2, 1};
    objects[1].counters = {5, 3, 4};
    source.link().add(true);
    source.link().add(false);
    taken = 6;
    traps = {7, 8, 9, 10, 11};

    EXPECT_THAT(nextHour(),
                ElementsAre("health: requests 15, of these sets 5, errors 5; back end down, "
                            "commands 2, failures 1; notifications taken 6; traps sent 7, failed "
                            "8, informs answered 9, given up 10, waiting 11"));
    EXPECT_THAT(nextHour(), IsEmpty()) << "told already";
    ++taken;
    EXPECT_THAT(nextHour(), ElementsAre(HasSubstr("notifications taken 7; ")));
}

TEST_F(HealthOf, AStateAloneIsAChange)
{
    subscription = {true, clock.steady()};
    source.start();

    subscription.works = false;
    EXPECT_THAT(nextHour(), ElementsAre(HasSubstr("back end down, ")));
    subscription.works = true;
    EXPECT_THAT(nextHour(), ElementsAre(HasSubstr("back end up, ")));
}

TEST_F(HealthOf, EveryStateHasItsWord)
{
    AgentHealth health;
    const std::pair<Backend, const char*> rows[] = {{Backend::Embedded, "back end embedded, "},
                                                    {Backend::Up, "back end up, "},
                                                    {Backend::Down, "back end down, "},
                                                    {Backend::Unknown, "back end unknown, "}};
    for (const auto& [state, text] : rows) {
        health.backend = state;
        EXPECT_THAT(talvik::healthLine(health), HasSubstr(text));
    }
}

}  // namespace
