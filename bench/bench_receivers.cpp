// Trap destinations through SNMP: durable creates beside SQLite alone, and walks beside a net-snmp
// agent that keeps the same rows in memory.
#include "bench/agent_process.h"
#include "bench/container_agent.h"
#include "bench/durable_inserts.h"
#include "bench/ratio_reporter.h"
#include "bench/receiver_rows.h"
#include "bench/snmp_manager.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace talvik::bench {

namespace {

constexpr unsigned kReceivers = 1000;
constexpr unsigned kCreates = 1000;
constexpr std::size_t kVariables = std::size_t{kReceivers} * 8;
constexpr long kRepetitions = 50;
constexpr long kCreateAndGo = 4;
constexpr long kDestroy = 6;
constexpr const char* kServeContainer = "--serve-container";

std::filesystem::path ownProgram()
{
    return std::filesystem::read_symlink("/proc/self/exe");
}

void create(const SnmpManager& manager, unsigned index)
{
    static const auto kEntry = receiverEntry();
    const auto row = receiver(index);
    manager.set(kEntry, index,
                {{3, ASN_INTEGER, kCreateAndGo, ""},
                 {2, ASN_UNSIGNED, row.port, ""},
                 {5, ASN_INTEGER, row.version, ""},
                 {6, ASN_OCTET_STR, 0, row.address},
                 {7, ASN_INTEGER, row.type, ""},
                 {8, ASN_OCTET_STR, 0, row.user}});
}

void destroy(const SnmpManager& manager, unsigned index)
{
    manager.set(receiverEntry(), index, {{3, ASN_INTEGER, kDestroy, ""}});
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
          talvikAgent_((ownProgram().parent_path() / "talvik-agentd").string(), talvikArguments(),
                       folder_.path() + "/talvik-agentd.log"),
          containerAgent_(ownProgram().string(),
                          {kServeContainer, std::to_string(containerPort_), folder_.path()},
                          folder_.path() + "/container.log"),
          talvik_(talvikPort_, "bench"),
          container_(containerPort_, "bench"),
          database_(folder_.path())
    {
        talvikAgent_.waitUntil([this] { return talvik_.answers(); });
        containerAgent_.waitUntil([this] { return container_.answers(); });
        for (unsigned index = 1; index <= kReceivers; ++index) {
            create(talvik_, index);
            database_.insert(receiver(index));
        }
    }

    std::vector<std::string> talvikArguments() const
    {
        const auto config = folder_.path() + "/talvik-agentd.conf";
        std::ofstream(config) << "rwcommunity bench 127.0.0.1\n";
        const std::string sources = TALVIK_SOURCE_DIR;
        return {"--config",    config,
                "--state-dir", folder_.path() + "/state",
                "--listen",    "udp:127.0.0.1:" + std::to_string(talvikPort_),
                "--device",    sources + "/etc/talvik-device.xml",
                "--mib-dir",   sources + "/mibs",
                "--module",    TALVIK_MODULE_FILE};
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

double median(std::vector<Seconds>& times)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return middle->count();
}

/// A disk's time for a sync wanders by a factor within seconds, so the two take turns, create by
/// create.
void compareCreates()
{
    auto& bench = Bench::instance();
    std::vector<Seconds> throughSnmp;
    std::vector<Seconds> sqliteAlone;
    for (unsigned index = kReceivers + 1; index <= kReceivers + kCreates; ++index) {
        throughSnmp.push_back(timeOf([&] { create(bench.talvik(), index); }));
        sqliteAlone.push_back(timeOf([&] { bench.database().insert(receiver(index)); }));
    }
    for (unsigned index = kReceivers + 1; index <= kReceivers + kCreates; ++index) {
        destroy(bench.talvik(), index);
    }
    bench.database().removeBehind(kReceivers);
    const double snmp = median(throughSnmp);
    const double sqlite = median(sqliteAlone);
    std::printf(
        "%u durable creates in turns, medians: through SNMP %.0f us (%.0f/s), SQLite alone %.0f "
        "us (%.0f/s); creates a second = %.2f of SQLite's (target 0.70 at least)\n\n",
        kCreates, snmp * 1e6, 1 / snmp, sqlite * 1e6, 1 / sqlite, sqlite / snmp);
    std::fflush(stdout);
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
    compareCreates();
    return runBenchmarks(
        argc, argv, {"--benchmark_repetitions=7", "--benchmark_enable_random_interleaving=true"},
        kTargets, RatioReporter::Clock::Wall);
}

}  // namespace

}  // namespace talvik::bench

int main(int argc, char** argv)
{
    try {
        if (argc == 4 && std::strcmp(argv[1], talvik::bench::kServeContainer) == 0) {
            const auto port = static_cast<unsigned>(std::stoul(argv[2]));
            talvik::bench::serveContainer(port, talvik::bench::kReceivers, argv[3]);
        }
        return talvik::bench::run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "talvik-bench-receivers: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
