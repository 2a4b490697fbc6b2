// Trap destinations through SNMP: durable creates beside SQLite alone, and walks beside a net-snmp
// agent that keeps the same rows in memory.
#include "bench/agent_process.h"
#include "bench/container_agent.h"
#include "bench/durable_inserts.h"
#include "bench/ratio_reporter.h"
#include "bench/receiver_rows.h"
#include "bench/snmp_manager.h"
#include "bench/talvik_arguments.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace talvik::bench {

namespace {

constexpr unsigned kReceivers = 1000;
constexpr unsigned kBlock = 50;  ///< creates in turn
constexpr unsigned kBlocks = 10;
constexpr std::size_t kWindow = 8;  ///< requests on their way
constexpr std::size_t kVariables = std::size_t{kReceivers} * 8;
constexpr long kRepetitions = 50;
constexpr long kCreateAndGo = 4;
constexpr long kDestroy = 6;
constexpr const char* kServeContainer = "--serve-container";

RowAssignment creation(unsigned index)
{
    const auto row = receiver(index);
    return {index,
            {{3, ASN_INTEGER, kCreateAndGo, ""},
             {2, ASN_UNSIGNED, row.port, ""},
             {5, ASN_INTEGER, row.version, ""},
             {6, ASN_OCTET_STR, 0, row.address},
             {7, ASN_INTEGER, row.type, ""},
             {8, ASN_OCTET_STR, 0, row.user}}};
}

RowAssignment removal(unsigned index)
{
    return {index, {{3, ASN_INTEGER, kDestroy, ""}}};
}

/// `make` of each index from `first` on.
template <typename Make>
auto each(unsigned first, unsigned count, Make make)
{
    std::vector<decltype(make(first))> all;
    for (unsigned index = first; index < first + count; ++index) {
        all.push_back(make(index));
    }
    return all;
}

/// Both agents with 1,000 receivers each, and the database alone.
class Bench {
public:
    static Bench& instance()
    {
        static Bench bench;
        return bench;
    }

    const SnmpManager& talvik() const { return talvik_; }
    const SnmpManager& container() const { return container_; }
    DurableInserts& database() { return database_; }

private:
    Bench()
        : talvikPort_(freePort()),
          containerPort_(freePort()),
          talvikAgent_(programBeside("talvik-agentd"), talvikArguments(folder_.path(), talvikPort_),
                       folder_.path() + "/talvik-agentd.log"),
          containerAgent_(ownProgram(),
                          {kServeContainer, std::to_string(containerPort_), folder_.path()},
                          folder_.path() + "/container.log"),
          talvik_(talvikPort_, kCommunity),
          container_(containerPort_, kCommunity),
          database_(folder_.path())
    {
        talvikAgent_.waitUntil([this] { return talvik_.answers(); });
        containerAgent_.waitUntil([this] { return container_.answers(); });
        talvik_.setAll(receiverEntry(), each(1, kReceivers, creation), kWindow);
        for (const auto& row : each(1, kReceivers, receiver)) {
            database_.insert(row);
        }
    }

    WorkFolder folder_;
    unsigned talvikPort_;
    unsigned containerPort_;
    AgentProcess talvikAgent_;
    AgentProcess containerAgent_;
    SnmpManager talvik_;
    SnmpManager container_;
    DurableInserts database_;
};

using Seconds = std::chrono::duration<double>;

template <typename Work>
Seconds timeOf(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - start;
}

double median(std::vector<Seconds> times)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return middle->count();
}

/// Times of blocks of creates, in turns.
struct CreateTimes {
    std::vector<Seconds> throughSnmp;
    std::vector<Seconds> sqliteAlone;
};

/// A block of creates through SNMP, then the same by SQLite alone.
void takeTurn(unsigned first, std::size_t window, CreateTimes& times)
{
    auto& bench = Bench::instance();
    const auto requests = each(first, kBlock, creation);
    const auto rows = each(first, kBlock, receiver);
    times.throughSnmp.push_back(
        timeOf([&] { bench.talvik().setAll(receiverEntry(), requests, window); }));
    times.sqliteAlone.push_back(timeOf([&] {
        for (const auto& row : rows) {
            bench.database().insert(row);
        }
    }));
}

std::string comparison(const char* how, const CreateTimes& times)
{
    const double snmp = kBlock / median(times.throughSnmp);
    const double sqlite = kBlock / median(times.sqliteAlone);
    std::ostringstream text;
    text << std::fixed << std::setprecision(0) << "durable creates a second, " << how << ": "
         << snmp << " (" << 1e6 / snmp << " us each), SQLite alone " << sqlite << " ("
         << 1e6 / sqlite << " us each), " << std::setprecision(2) << snmp / sqlite
         << " of SQLite's\n";
    return text.str();
}

std::string createsReport;

/// A disk's time for a sync wanders by a factor within seconds, so all take turns, block by block.
void creates(benchmark::State& state)
{
    CreateTimes oneByOne;
    CreateTimes windowed;
    unsigned next = kReceivers + 1;
    for (auto _ : state) {
        for (unsigned turn = 0; turn < kBlocks; ++turn) {
            takeTurn(next, 1, oneByOne);
            takeTurn(next + kBlock, kWindow, windowed);
            next += 2 * kBlock;
        }
    }
    auto& bench = Bench::instance();
    bench.talvik().setAll(receiverEntry(), each(kReceivers + 1, next - kReceivers - 1, removal),
                          kWindow);
    bench.database().removeBehind(kReceivers);
    createsReport += comparison("one request at a time", oneByOne) +
                     comparison("8 requests on their way (target 0.70 at least)", windowed);
}

void walk(benchmark::State& state, const SnmpManager& manager, long repetitions)
{
    for (auto _ : state) {
        const auto seen = manager.walk(receiverTable(), repetitions);
        if (seen != kVariables) {
            state.SkipWithError(("a walk saw " + std::to_string(seen) + " variables").c_str());
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kVariables));
}

void walkGetBulk(benchmark::State& state)
{
    walk(state, Bench::instance().talvik(), kRepetitions);
}

void walkGetBulkContainer(benchmark::State& state)
{
    walk(state, Bench::instance().container(), kRepetitions);
}

void walkGetNext(benchmark::State& state)
{
    walk(state, Bench::instance().talvik(), 0);
}

void walkGetNextContainer(benchmark::State& state)
{
    walk(state, Bench::instance().container(), 0);
}

BENCHMARK(creates)->UseRealTime()->Iterations(1)->Repetitions(3)->Unit(benchmark::kMillisecond);
BENCHMARK(walkGetBulk)->UseRealTime()->Iterations(4)->Unit(benchmark::kMillisecond);
BENCHMARK(walkGetBulkContainer)->UseRealTime()->Iterations(4)->Unit(benchmark::kMillisecond);
BENCHMARK(walkGetNext)->UseRealTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(walkGetNextContainer)->UseRealTime()->Iterations(1)->Unit(benchmark::kMillisecond);

const std::vector<Target> kTargets = {
    {"walkGetBulk", "walkGetBulkContainer", 0},
    {"walkGetNext", "walkGetNextContainer", 0},
};

int run(int argc, char** argv)
{
    setenv("MIBS", "", 1);
    init_snmp("talvik-bench");
    const int status = runBenchmarks(
        argc, argv, {"--benchmark_repetitions=7", "--benchmark_enable_random_interleaving=true"},
        kTargets, RatioReporter::Clock::Wall);
    std::fputs(createsReport.c_str(), stdout);
    return status;
}

}  // namespace

}  // namespace talvik::bench

int main(int argc, char** argv)
{
    try {
        if (argc == 4 && std::strcmp(argv[1], talvik::bench::kServeContainer) == 0) {
            const auto port = static_cast<unsigned>(std::stoul(argv[2]));
            talvik::bench::serveContainer(
                port, talvik::bench::receiverRows(talvik::bench::kReceivers), argv[3]);
        }
        return talvik::bench::run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "talvik-bench-receivers: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
