#include "host/platform/trap_results.h"
#include "host/platform/trap_store.h"
#include "tests/unit/host_platform/trap_kit.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <random>

namespace {

using namespace talvik::test;
using talvik::TrapStore;
using testing::IsEmpty;
namespace trap_result = talvik::trap_result;

using Random = std::mt19937;
/// What the list should hold.
using Model = std::map<unsigned, tTrapDestInfo>;

constexpr unsigned kHighestIndex = 40;
constexpr int kMostChanges = 2000;
constexpr char kBefore = 'b';
constexpr char kAfter = 'a';

unsigned upTo(Random& random, unsigned limit)
{
    return static_cast<unsigned>(random() % limit) + 1;
}

tTrapDestInfo anyDestination(Random& random, unsigned index)
{
    auto destination = destinationTo("192.0.2." + std::to_string(upTo(random, 254)),
                                     upTo(random, 65535), std::to_string(index));
    destination.user = std::string(upTo(random, 32), 'u');
    return destination;
}

/// Draws one change, makes it in `model`, and in `store` if there is one. True if both agree on the
/// result.
bool change(Random& random, Model& model, TrapStore* store)
{
    const auto kind = upTo(random, 4);
    const auto index = upTo(random, kHighestIndex);
    const auto destination = anyDestination(random, index);
    const bool known = model.count(index) != 0;
    int expected = 0;
    int result = 0;
    if (kind <= 2) {
        expected = known ? trap_result::kIndexTaken : 0;
        model.emplace(index, destination);
        result = store != nullptr ? store->create(destination, index) : expected;
    } else if (kind == 3) {
        expected = known ? 0 : trap_result::kIndexUnknown;
        if (known) {
            model[index] = destination;
        }
        result = store != nullptr ? store->modify(destination) : expected;
    } else {
        expected = known ? 0 : trap_result::kIndexUnknown;
        model.erase(index);
        result = store != nullptr ? store->remove(destination.index) : expected;
    }
    return result == expected;
}

std::vector<TrapRow> rowsOf(const Model& model)
{
    std::vector<TrapRow> rows;
    for (const auto& item : model) {
        rows.push_back(rowOf(item.second));
    }
    return rows;
}

Model modelOf(const TrapStore& store)
{
    Model model;
    for (const auto& destination : store.all()) {
        model.emplace(std::stoul(destination.index), destination);
    }
    return model;
}

/// The life of an agent: says before and after each change that it is there.
void changeUntilKilled(const StoreFolder& folder, unsigned seed, const Model& start,
                       const Pipe& reports)
{
    TrapStore store(folder.path());
    Random random(seed);
    Model model = start;
    for (int i = 0; i < kMostChanges; ++i) {
        reports.write({kBefore});
        if (!change(random, model, &store)) {
            _exit(3);
        }
        reports.write({kAfter});
    }
}

void spin(unsigned turns)
{
    for (volatile unsigned i = 0; i < turns; i = i + 1) {
    }
}

/// What an agent that was killed had reported.
std::string reportsOfKilled(const StoreFolder& folder, unsigned seed, const Model& start)
{
    Random random(seed);
    Pipe pipe;
    OtherProcess agent([&] { changeUntilKilled(folder, seed, start, pipe); });
    pipe.closeWriter();
    std::string reports;
    const auto enough = upTo(random, 60);
    while (reports.size() < enough) {
        const auto more = pipe.read();
        if (more.empty()) {
            break;
        }
        reports += more;
    }
    spin(upTo(random, 200000));
    EXPECT_EQ(agent.kill() & 0x7F, SIGKILL) << "the agent ended by itself";
    return reports + pipe.readToEnd();
}

TEST(KilledTrapStore, HoldsTheListBeforeOrAfterTheLastChange)
{
    constexpr unsigned kRounds = 60;
    const unsigned base = std::random_device()();
    std::cout << "seeds from " << base << " on\n";
    const StoreFolder folder;
    Model model;
    unsigned cutShort = 0;
    for (unsigned seed = base; seed != base + kRounds; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const auto reports = reportsOfKilled(folder, seed, model);

        Random random(seed);
        for (auto done = std::count(reports.begin(), reports.end(), kAfter); done > 0; --done) {
            change(random, model, nullptr);
        }
        const auto old = rowsOf(model);
        if (!reports.empty() && reports.back() == kBefore) {
            change(random, model, nullptr);
            ++cutShort;
        }

        const TrapStore store(folder.path());
        ASSERT_THAT(talvik::test::rowsOf(store), testing::AnyOf(old, rowsOf(model)));
        model = modelOf(store);
    }
    std::cout << cutShort << " of " << kRounds << " rounds ended within a change\n";
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        EXPECT_EQ(entry.path().filename().string().find("damaged"), std::string::npos);
    }
}

TEST(KilledTrapStore, ThatWasBeingMadeIsEmpty)
{
    constexpr unsigned kRounds = 60;
    const unsigned base = std::random_device()();
    std::cout << "seeds from " << base << " on\n";
    for (unsigned seed = base; seed != base + kRounds; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const StoreFolder folder;
        Pipe pipe;
        OtherProcess agent([&] {
            pipe.write("r");
            const TrapStore store(folder.path());
            pause();
        });
        ASSERT_EQ(pipe.read(), "r");
        Random random(seed);
        spin(upTo(random, 2000000));
        agent.kill();

        EXPECT_THAT(TrapStore(folder.path()).all(), IsEmpty());
        EXPECT_FALSE(std::filesystem::exists(folder.path("trap-destinations.db.damaged-1")));
    }
}

}  // namespace
