#include "tests/contract/faults/operations.h"
#include "tests/contract/vtable.h"
#include "tests/support/allocation_probe.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <vector>

// Loading, using and unloading the module, once and many times, in one copy and in two.

namespace {

using namespace talvik;
using contract::hostSide;
using contract::Outcome;
using contract::Visit;

/// What each operation that needs no more than handlers comes to.
std::vector<Outcome> useAll(Visit& visit)
{
    std::vector<Outcome> outcomes;
    for (const auto& operation : contract::operations()) {
        if (operation.needs == contract::Operation::Needs::Nothing) {
            continue;
        }
        if (operation.arrange != nullptr) {
            operation.arrange(hostSide());
        }
        outcomes.push_back(outcomeOf(operation, visit));
    }
    return outcomes;
}

std::unique_ptr<Visit> begin(const std::string& path = TALVIK_MODULE_FILE)
{
    auto visit = std::make_unique<Visit>(path);
    visit->makeModule();
    visit->makeHandlers();
    return visit;
}

class ModuleUse : public testing::Test {
protected:
    ModuleUse()
    {
        hostSide();
        usual = useAll(*begin());  // what is made once in a process is there then
    }

    /// A copy of the module's file, which the dynamic linker takes for another one.
    std::string copy() const
    {
        const auto path = folder.path("libCopy.so");
        std::filesystem::copy_file(TALVIK_MODULE_FILE, path,
                                   std::filesystem::copy_options::overwrite_existing);
        return path;
    }

    test::TempDir folder;
    std::vector<Outcome> usual;
};

TEST_F(ModuleUse, NothingOfItFails)
{
    for (const auto& outcome : usual) {
        EXPECT_EQ(outcome.thrown, "");
    }
}

TEST_F(ModuleUse, AHundredLoadsWithEverythingUsedLeaveNothingBehind)
{
    for (int round = 1; round <= 100; ++round) {
        const test::AllocationProbe probe;
        ASSERT_EQ(useAll(*begin()), usual) << "round " << round;
        ASSERT_EQ(probe.live(), 0) << "round " << round;
        ASSERT_GT(probe.allocations(), 1000U);
    }
}

TEST_F(ModuleUse, LoadedTwiceItIsOneImageThatLivesAsLongAsEither)
{
    auto first = begin();
    const auto second = begin();
    EXPECT_EQ(first->image(), second->image());

    first.reset();

    EXPECT_EQ(useAll(*second), usual);
}

TEST_F(ModuleUse, TwoCopiesAreTwoImagesThatDoNotMeet)
{
    auto first = begin();
    const auto second = begin(copy());
    EXPECT_NE(first->image(), second->image());
    const auto imageOf = [](const Visit& visit) {
        return contract::imageOf(contract::virtualEntry(&visit.notifyHandler(0), 2));
    };
    EXPECT_NE(imageOf(*first), imageOf(*second));
    EXPECT_EQ(useAll(*first), usual);
    EXPECT_EQ(useAll(*second), usual);

    first.reset();

    EXPECT_EQ(useAll(*second), usual);
}

TEST_F(ModuleUse, TheOrderOfTheEndsDoesNotMatter)
{
    for (const auto& path : {std::string(TALVIK_MODULE_FILE), copy()}) {
        for (const bool firstGoesFirst : {true, false}) {
            SCOPED_TRACE(path + (firstGoesFirst ? ", in order" : ", the other way round"));
            const test::AllocationProbe probe;
            {
                auto first = begin();
                auto second = begin(path);
                EXPECT_EQ(useAll(*first), usual);
                EXPECT_EQ(useAll(*second), usual);
                (firstGoesFirst ? first : second).reset();
                EXPECT_EQ(useAll(firstGoesFirst ? *second : *first), usual);
            }
            EXPECT_EQ(probe.live(), 0);
        }
    }
}

TEST_F(ModuleUse, EachCallOfTheFactoryMakesAModuleOfItsOwn)
{
    const test::AllocationProbe probe;
    {
        Visit visit;
        visit.makeModule();
        visit.makeModule();  // the first one goes
        visit.makeHandlers();
        visit.makeHandlers();
        EXPECT_NE(&visit.notifyHandler(0), &visit.notifyHandler(2));
        EXPECT_EQ(useAll(visit), usual);
    }
    EXPECT_EQ(probe.live(), 0);
}

using ModuleUseDeathTest = ModuleUse;

TEST_F(ModuleUseDeathTest, AProcessMayEndWithTheModuleLoaded)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            static const auto kept = begin();
            useAll(*kept);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(ModuleUseDeathTest, AProcessMayEndWithNothingOfTheModuleDeleted)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            static Visit* const kept = begin().release();
            useAll(*kept);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
