// Alarms as traps: the agent's whole way beside a bare loop of the SNMP library that sends the same
// bindings on open sessions, and the module's part of it alone.
#include "bench/agent_process.h"
#include "bench/allocation_count.h"
#include "bench/ratio_reporter.h"
#include "bench/trap_lab.h"

#include "host/snmp/notification_dispatcher.h"
#include "notify/talvik_notify_msg_handler.h"

#include <agent_pp/snmp_pp_ext.h>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace talvik::bench {

namespace {

constexpr unsigned kMany = 4;

template <typename Way>
Way& toReceivers(unsigned count)
{
    static DeafReceivers one(1);
    static DeafReceivers many(kMany);
    static Way toOne(one);
    static Way toMany(many);
    return count == 1 ? toOne : toMany;
}

const backend::Bytes& notification()
{
    static const auto kNotification = AlarmPath::notification();
    return kNotification;
}

void throughTheAgent(benchmark::State& state, unsigned receivers)
{
    auto& path = toReceivers<AlarmPath>(receivers);
    const auto before = path.sent();
    for (auto _ : state) {
        path.send(notification());
    }
    const auto traps = static_cast<std::uint64_t>(state.iterations()) * receivers;
    if (path.sent() - before != traps) {
        state.SkipWithError("not every trap was sent");
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(traps));
}

void bare(benchmark::State& state, unsigned receivers)
{
    auto& loop = toReceivers<BareLoop>(receivers);
    static const auto kTrap = trapOf(notification());
    for (auto _ : state) {
        loop.send(kTrap);
    }
    state.SetItemsProcessed(state.iterations() * receivers);
}

void agentToOne(benchmark::State& state)
{
    throughTheAgent(state, 1);
}

void bareToOne(benchmark::State& state)
{
    bare(state, 1);
}

void agentToFour(benchmark::State& state)
{
    throughTheAgent(state, kMany);
}

void bareToFour(benchmark::State& state)
{
    bare(state, kMany);
}

/// The module's part for one handler: look-up, texts, fourteen bindings and their summary.
void constructBindings(benchmark::State& state)
{
    auto wire = notification();
    backend::Package package;
    backend::decodeInto(package, wire);
    CTalvikNotifyMsgHandler handler;
    const auto before = allocationCount();
    for (auto _ : state) {
        Agentpp::Vbx* made = nullptr;
        if (handler.constructAlarmTrapVb(*package[0], made) != 0) {
            state.SkipWithError("no bindings");
        }
        const std::unique_ptr<Agentpp::Vbx[]> bindings(made);
        benchmark::DoNotOptimize(bindings.get());
    }
    state.counters["allocations"] = benchmark::Counter(
        static_cast<double>(allocationCount() - before), benchmark::Counter::kAvgIterations);
}

BENCHMARK(agentToOne);
BENCHMARK(bareToOne);
BENCHMARK(agentToFour);
BENCHMARK(bareToFour);
BENCHMARK(constructBindings);

// A rate of at least 0.8 of the bare loop's is a time of at most 1.25 of it.
const std::vector<Target> kTargets = {
    {"agentToOne", "bareToOne", 1.25},
    {"agentToFour", "bareToFour", 1.0},
    {"constructBindings", "bareToOne", 0},
};

}  // namespace

}  // namespace talvik::bench

int main(int argc, char** argv)
{
    try {
        const talvik::bench::WorkFolder folder;
        talvik::bench::startLab(folder.path());
        return talvik::bench::runBenchmarks(argc, argv,
                                            {"--benchmark_repetitions=15",
                                             "--benchmark_enable_random_interleaving=true",
                                             "--benchmark_report_aggregates_only=true"},
                                            talvik::bench::kTargets);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "talvik-bench-traps: %s\n", error.what());
        return 1;
    }
}
