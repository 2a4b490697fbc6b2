#include "tests/support/fake_trap_host.h"
#include "tests/unit/notify/notify_kit.h"

#include <gmock/gmock.h>

namespace {

using namespace talvik::test;
using testing::ElementsAre;

tTrapDestInfo destination(const std::string& index, unsigned type)
{
    return destinationOf({index, "192.0.2." + index, 162, 3, type, "user" + index});
}

std::vector<TrapFields> fieldsOfAll(const std::list<tTrapDestInfo>& destinations)
{
    std::vector<TrapFields> found;
    for (const auto& each : destinations) {
        found.push_back(fieldsOf(each));
    }
    return found;
}

class TrapDestinations : public NotifyTest {
protected:
    std::map<std::string, tTrapDestInfo> all;
    std::list<tTrapDestInfo> chosen{destination("99", 0)};
};

TEST_F(TrapDestinations, AreThoseOfTypesOneAndThreeInTheOrderOfTheirKeys)
{
    all["c"] = destination("1", 1);
    all["a"] = destination("2", 3);
    all["b"] = destination("3", 2);
    all["d"] = destination("4", 7);
    all["e"] = destination("5", 0);

    handler.filterTrapMap(all, chosen);

    EXPECT_THAT(fieldsOfAll(chosen),
                ElementsAre(fieldsOf(destination("99", 0)), fieldsOf(destination("2", 3)),
                            fieldsOf(destination("1", 1))));
}

TEST_F(TrapDestinations, OfTheOidBasedHandlerAreThoseOfTypeSeven)
{
    all["c"] = destination("1", 7);
    all["a"] = destination("2", 3);
    all["b"] = destination("3", 7);
    all["d"] = destination("4", 1);

    oidBased.filterTrapMap(all, chosen);

    EXPECT_THAT(fieldsOfAll(chosen),
                ElementsAre(fieldsOf(destination("99", 0)), fieldsOf(destination("3", 7)),
                            fieldsOf(destination("1", 7))));
}

TEST_F(TrapDestinations, EveryTypeGoesToOneHandlerAtMost)
{
    for (const unsigned type : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 0x80000001u, 0xFFFFFFFFu}) {
        all = {{"only", destination("1", type)}};
        std::list<tTrapDestInfo> first;
        std::list<tTrapDestInfo> second;
        handler.filterTrapMap(all, first);
        oidBased.filterTrapMap(all, second);

        EXPECT_EQ(first.size(), type == 1 || type == 3 ? 1u : 0u) << type;
        EXPECT_EQ(second.size(), type == 7 ? 1u : 0u) << type;
    }
}

TEST_F(TrapDestinations, NoneAreChosenFromNone)
{
    handler.filterTrapMap(all, chosen);
    oidBased.filterTrapMap(all, chosen);

    EXPECT_EQ(chosen.size(), 1u);
}

}  // namespace
