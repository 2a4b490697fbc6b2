#include "tests/contract/loaded_module.h"
#include "tests/contract/vtable.h"

#include <gmock/gmock.h>

#include <set>

namespace {

using talvik::contract::HandlerList;
using talvik::contract::LoadedModule;
using talvik::contract::OwnedHandlers;
using testing::ElementsAre;

constexpr const char* kTopology = "1.3.6.1.4.1.99999.2.91.9.1";
constexpr const char* kCurrentAlarms = "1.3.6.1.4.1.99999.2.91.10.1.1";
constexpr const char* kClearAlarm = "1.3.6.1.4.1.99999.2.91.10.1.2";
constexpr const char* kTrapDestinations = "1.3.6.1.4.1.99999.2.91.10.4.1";

std::vector<std::string> keysOf(const HandlerList& handlers)
{
    std::vector<std::string> keys;
    for (const auto& entry : handlers) {
        keys.push_back(entry.first);
    }
    return keys;
}

TEST(ModuleEntry, NamesItsMibDescriptionWithoutAPath)
{
    LoadedModule loaded;
    EXPECT_EQ(loaded.module().getMibFileName(), "KEL-TALVIK-MIB.json");
}

TEST(ModuleEntry, ServesItsSubtreesInOrder)
{
    LoadedModule loaded;
    const OwnedHandlers handlers(loaded.module());
    EXPECT_THAT(keysOf(handlers.list()),
                ElementsAre(kTopology, kCurrentAlarms, kClearAlarm, kTrapDestinations));
}

TEST(ModuleEntry, AppendsBehindWhatTheListHolds)
{
    LoadedModule loaded;
    HandlerList handlers;
    handlers.emplace_back(kTopology, nullptr);
    handlers.emplace_back("1.2.3", nullptr);

    loaded.module().getSvcHandler(handlers);

    EXPECT_THAT(keysOf(handlers), ElementsAre(kTopology, "1.2.3", kTopology, kCurrentAlarms,
                                              kClearAlarm, kTrapDestinations));
    EXPECT_EQ(handlers.front().second, nullptr);
    for (const auto& entry : handlers) {
        delete entry.second;
    }
}

TEST(ModuleEntry, MakesNewHandlersWithEachCall)
{
    LoadedModule loaded;
    const OwnedHandlers first(loaded.module());
    const OwnedHandlers second(loaded.module());

    std::set<CSnmpHandler*> distinct;
    for (const auto* handlers : {&first, &second}) {
        for (const auto& entry : handlers->list()) {
            distinct.insert(entry.second);
        }
    }
    EXPECT_EQ(distinct.size(), first.list().size() + second.list().size());
}

TEST(ModuleEntry, MakesADistinctModuleObjectWithEachCall)
{
    LoadedModule first;
    LoadedModule second;
    EXPECT_NE(&first.module(), &second.module());
}

TEST(ModuleEntry, TheModulesTableIsTheModulesOwn)
{
    LoadedModule loaded;
    for (std::size_t slot = 0; slot <= 3; ++slot) {
        EXPECT_EQ(talvik::contract::imageOf(talvik::contract::virtualEntry(&loaded.module(), slot)),
                  LoadedModule::file())
            << "slot " << slot;
    }
}

TEST(ModuleEntry, ItsOperationsAreCalledBySlot)
{
    LoadedModule loaded;
    const auto getMibFileName = talvik::contract::operationAt<std::string>(&loaded.module(), 2);
    EXPECT_EQ(getMibFileName(&loaded.module()), "KEL-TALVIK-MIB.json");

    HandlerList handlers;
    const auto getSvcHandler =
        talvik::contract::operationAt<void, HandlerList&>(&loaded.module(), 3);
    getSvcHandler(&loaded.module(), handlers);
    EXPECT_THAT(keysOf(handlers),
                ElementsAre(kTopology, kCurrentAlarms, kClearAlarm, kTrapDestinations));
    for (const auto& entry : handlers) {
        delete entry.second;
    }
}

TEST(ModuleLifetime, NothingOfItStaysMappedAfterTheUnload)
{
    {
        LoadedModule loaded;
        const OwnedHandlers handlers(loaded.module());
        EXPECT_TRUE(LoadedModule::isMapped());
    }
    EXPECT_FALSE(LoadedModule::isMapped());
}

TEST(ModuleLifetime, LoadsAndUnloadsAHundredTimes)
{
    for (int round = 1; round <= 100; ++round) {
        {
            LoadedModule loaded;
            const OwnedHandlers handlers(loaded.module());
            ASSERT_FALSE(handlers.list().empty()) << "round " << round;
        }
        ASSERT_FALSE(LoadedModule::isMapped()) << "round " << round;
    }
}

}  // namespace
