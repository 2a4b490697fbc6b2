#include "host/snmp/health_subtree.h"

#include "host/snmp/request_bridge.h"
#include "tests/unit/host_snmp/request_kit.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using talvik::AgentHealth;
using talvik::healthInstances;
using talvik::healthRoot;
using talvik::ObjectId;
using talvik::SnmpValue;
using talvik::Syntax;
using talvik::test::HandMadeRequest;
using testing::ElementsAre;

constexpr int kFine = SNMP_ERR_NOERROR;

AgentHealth sample()
{
    AgentHealth health;
    health.version = "1.2.3";
    health.started = 1;
    health.moduleFile = "/a/module.so";
    health.module = AgentHealth::Module::Loaded;
    health.master = AgentHealth::Master::Away;
    health.backendName = "unix:/b.sock";
    health.backend = AgentHealth::Backend::Down;
    health.backendCommands = 10;
    health.backendFailures = 11;
    health.receivers = 12;
    health.notificationsTaken = 13;
    health.traps = {14, 15, 16, 17, 18};
    health.objects = {{"one", {1, 2}, false, {19, 20, 21}}, {"two", {1, 3}, true, {22, 23, 24}}};
    health.notificationHandlers = {{{1, 4}, {25, 26}}, {{}, {27, 28}}};
    return health;
}

SnmpValue valueAt(const AgentHealth& health, const ObjectId& suffix)
{
    for (const auto& [id, value] : healthInstances(health)) {
        if (id == suffix) {
            return value;
        }
    }
    throw std::out_of_range(talvik::toText(suffix));
}

TEST(HealthInstances, EveryScalarHasItsNumber)
{
    struct Row {
        unsigned long number;
        Syntax syntax;
        std::int64_t value;
    };
    const Row rows[] = {
        {5, Syntax::Integer, 1},     {6, Syntax::Integer, 3},     {8, Syntax::Integer, 3},
        {10, Syntax::Counter64, 10}, {11, Syntax::Counter64, 11}, {12, Syntax::Counter64, 41},
        {13, Syntax::Counter64, 43}, {14, Syntax::Counter64, 45}, {15, Syntax::Counter64, 13},
        {16, Syntax::Gauge32, 12},   {17, Syntax::Counter64, 14}, {18, Syntax::Counter64, 15},
        {19, Syntax::Counter64, 16}, {20, Syntax::Counter64, 17}, {21, Syntax::Gauge32, 18}};
    for (const auto& row : rows) {
        const auto value = valueAt(sample(), {1, row.number, 0});

        EXPECT_EQ(value.syntax, row.syntax) << row.number;
        EXPECT_EQ(value.number, row.value) << row.number;
    }
    EXPECT_EQ(valueAt(sample(), {1, 1, 0}).octets, "1.2.3");
    EXPECT_EQ(valueAt(sample(), {1, 4, 0}).octets, "/a/module.so");
    EXPECT_EQ(valueAt(sample(), {1, 7, 0}).octets, "unix:/b.sock");
}

TEST(HealthInstances, AMomentThatHasNotComeIsEightZeros)
{
    auto health = sample();
    EXPECT_EQ(valueAt(health, {1, 3, 0}).octets, std::string(8, '\0'));
    EXPECT_EQ(valueAt(health, {1, 9, 0}).octets, std::string(8, '\0'));

    health.reloaded = 1'700'000'000;
    health.backendAnswered = 1'700'000'000;

    EXPECT_NE(valueAt(health, {1, 3, 0}).octets, std::string(8, '\0'));
    EXPECT_EQ(valueAt(health, {1, 9, 0}).octets, valueAt(health, {1, 3, 0}).octets);
}

TEST(HealthInstances, EveryColumnHasItsNumber)
{
    EXPECT_EQ(valueAt(sample(), {2, 1, 1, 2, 2}).octets, "two");
    EXPECT_EQ(valueAt(sample(), {2, 1, 1, 3, 2}).octets, "1.3");
    EXPECT_EQ(valueAt(sample(), {2, 1, 1, 4, 1}).number, 1);
    EXPECT_EQ(valueAt(sample(), {2, 1, 1, 4, 2}).number, 2);
    EXPECT_EQ(valueAt(sample(), {2, 1, 1, 5, 2}).number, 22);
    EXPECT_EQ(valueAt(sample(), {2, 1, 1, 6, 2}).number, 23);
    EXPECT_EQ(valueAt(sample(), {2, 1, 1, 7, 2}).number, 24);
    EXPECT_EQ(valueAt(sample(), {2, 2, 1, 2, 1}).octets, "1.4");
    EXPECT_EQ(valueAt(sample(), {2, 2, 1, 2, 2}).octets, "") << "it did not tell";
    EXPECT_EQ(valueAt(sample(), {2, 2, 1, 3, 1}).number, 25);
    EXPECT_EQ(valueAt(sample(), {2, 2, 1, 4, 2}).number, 28);
}

TEST(HealthInstances, AscendAndAreAll)
{
    const auto instances = healthInstances(sample());

    ASSERT_EQ(instances.size(), 21U + 2 * 6 + 2 * 3);
    for (std::size_t i = 1; i < instances.size(); ++i) {
        EXPECT_LT(instances[i - 1].first, instances[i].first);
    }
}

TEST(HealthInstances, AGaugeStaysAtItsGreatest)
{
    auto health = sample();
    health.traps.waiting = 0x100000000U;

    EXPECT_EQ(valueAt(health, {1, 21, 0}).number, 0xFFFFFFFF);
}

TEST(HealthInstances, ALongTextIsCutBetweenTwoCharacters)
{
    auto health = sample();
    health.version = std::string(255, 'a');
    health.moduleFile = std::string(254, 'a') + "\xC3\xA4";
    health.backendName = std::string(300, '\xFF');

    EXPECT_EQ(valueAt(health, {1, 1, 0}).octets, std::string(255, 'a'));
    EXPECT_EQ(valueAt(health, {1, 4, 0}).octets, std::string(254, 'a'));
    EXPECT_EQ(valueAt(health, {1, 7, 0}).octets, std::string(255, '\xFF')) << "no UTF-8 anyway";
}

class HealthSubtreeOn : public testing::Test {
protected:
    HealthSubtreeOn()
    {
        bridge.serve(std::make_unique<talvik::HealthSubtree>([this] {
            ++asked;
            if (broken) {
                throw std::runtime_error("broken");
            }
            return health;
        }));
    }

    static ObjectId name(const ObjectId& suffix)
    {
        auto id = healthRoot();
        id.insert(id.end(), suffix.begin(), suffix.end());
        return id;
    }

    static int typeAt(const ObjectId& suffix)
    {
        HandMadeRequest request(healthRoot());
        request.add(name(suffix)).run(MODE_GET);
        return request.variable().type;
    }

    AgentHealth health = sample();
    int asked = 0;
    bool broken = false;
    talvik::RequestBridge bridge;
};

TEST_F(HealthSubtreeOn, AGetOfWhatIsNotThereSaysWhatIsMissing)
{
    for (const ObjectId& instance :
         {ObjectId{1, 1, 1}, {1, 21, 0, 0}, {2, 1, 1, 2, 3}, {2, 1, 1, 7, 1, 1}, {2, 2, 1, 4, 3}}) {
        EXPECT_EQ(typeAt(instance), SNMP_NOSUCHINSTANCE) << talvik::toText(instance);
    }
    for (const ObjectId& object : {ObjectId{},
                                   {1},
                                   {1, 1},
                                   {1, 22, 0},
                                   {2},
                                   {2, 1, 1, 2},
                                   {2, 1, 1, 1, 1},
                                   {2, 1, 1, 8, 1},
                                   {2, 1, 2, 2, 1},
                                   {2, 2, 1, 1, 1},
                                   {2, 2, 1, 5, 1},
                                   {2, 3, 1, 2, 1},
                                   {3, 1, 0}}) {
        EXPECT_EQ(typeAt(object), SNMP_NOSUCHOBJECT) << talvik::toText(object);
    }
}

TEST_F(HealthSubtreeOn, ARequestSeesOneMoment)
{
    HandMadeRequest request(healthRoot());
    request.add(name({1, 10, 0})).add(name({1, 11, 0}));

    EXPECT_THAT(request.run(MODE_GET), ElementsAre(kFine, kFine));
    request.run(MODE_GET);

    EXPECT_EQ(asked, 1);
}

TEST_F(HealthSubtreeOn, AWalkMeetsEveryInstanceAndEnds)
{
    auto at = healthRoot();
    std::size_t met = 0;
    for (; met < 100; ++met) {
        HandMadeRequest request(healthRoot());
        request.add(at);
        EXPECT_THAT(request.run(MODE_GETNEXT), ElementsAre(kFine));
        const auto& variable = request.variable();
        if (variable.type == ASN_NULL) {
            break;
        }
        const ObjectId next(variable.name, variable.name + variable.name_length);
        ASSERT_LT(at, next);
        at = next;
    }
    EXPECT_EQ(met, healthInstances(health).size());
}

TEST_F(HealthSubtreeOn, AFailureIsAGeneralErrorAndTheNextRequestIsFine)
{
    broken = true;
    HandMadeRequest request(healthRoot());
    request.add(name({1, 10, 0}));
    EXPECT_THAT(request.run(MODE_GET), ElementsAre(SNMP_ERR_GENERR));

    broken = false;

    EXPECT_EQ(typeAt({1, 10, 0}), ASN_COUNTER64);
}

}  // namespace
