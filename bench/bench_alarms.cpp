// The current alarm table through SNMP: walks beside a net-snmp agent that keeps the same rows in
// memory. Agents and managers share one processor, for what two of them gain by overlapping differs
// from run to run.
#include "bench/alarm_agents.h"
#include "bench/container_agent.h"
#include "bench/ratio_reporter.h"
#include "bench/sample_alarms.h"

#include <benchmark/benchmark.h>

#include <sched.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <map>
#include <string>
#include <system_error>
#include <vector>

namespace talvik::bench {

namespace {

constexpr unsigned kAlarms = 10'000;
constexpr unsigned kManyAlarms = 100'000;

/// What a walk took for each of its variables.
struct Costs {
    std::vector<double> wall;   ///< nanoseconds
    std::vector<double> agent;  ///< of the agent's processor time
};

std::map<std::string, Costs> costs;  // by benchmark

/// The states of agents with alarms, and the container agent with the rows of the smaller one.
class Bench {
public:
    static Bench& instance()
    {
        static Bench bench;
        return bench;
    }

    /// A folder with the state of an agent that has `count` alarms.
    std::string folderOf(unsigned count)
    {
        const auto folder = work_.path() + "/" + std::to_string(count);
        if (!made_[count]) {
            writeSampleAlarms(folder + "/state", count);
            made_[count] = true;
        }
        return folder;
    }

    const AlarmAgent& container() const { return container_; }

private:
    Bench() : container_(AlarmAgent::container(work_.path(), writtenRows())) {}

    std::string writtenRows()
    {
        const auto file = work_.path() + "/rows";
        writeRows(file, AlarmAgent::talvik(folderOf(kAlarms)).rows(kAlarms));
        return file;
    }

    WorkFolder work_;
    std::map<unsigned, bool> made_;
    AlarmAgent container_;
};

void walkLean(const AlarmAgent& agent, std::size_t variables)
{
    const auto seen = agent.walk();
    if (seen != variables) {
        throw std::runtime_error("a walk saw " + std::to_string(seen) + " variables");
    }
}

void walkStock(const AlarmAgent& agent, std::size_t /*variables*/)
{
    walkWithStockManager(agent.port());
}

using Walk = void (*)(const AlarmAgent& agent, std::size_t variables);

/// Takes the time of one walk over `alarms` rows.
void measure(benchmark::State& state, const char* name, const AlarmAgent& agent, Walk walk,
             unsigned alarms)
{
    const auto variables = alarms * kAlarmColumns;
    for (auto _ : state) {
        const auto used = agent.process().processorTime();
        const auto start = std::chrono::steady_clock::now();
        walk(agent, variables);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        const std::chrono::duration<double> processor = agent.process().processorTime() - used;
        state.SetIterationTime(time.count());
        const auto each = 1e9 / static_cast<double>(variables);
        costs[name].wall.push_back(time.count() * each);
        costs[name].agent.push_back(processor.count() * each);
    }
}

/// An agent that has just been started holds no row.
void coldWalk(benchmark::State& state)
{
    const auto agent = AlarmAgent::talvik(Bench::instance().folderOf(kAlarms));
    measure(state, "coldWalk", agent, walkLean, kAlarms);
}

void warmWalk(benchmark::State& state)
{
    const auto agent = AlarmAgent::talvik(Bench::instance().folderOf(kAlarms));
    walkLean(agent, kAlarms * kAlarmColumns);
    measure(state, "warmWalk", agent, walkLean, kAlarms);
}

void containerWalk(benchmark::State& state)
{
    measure(state, "containerWalk", Bench::instance().container(), walkLean, kAlarms);
}

void coldStockWalk(benchmark::State& state)
{
    const auto agent = AlarmAgent::talvik(Bench::instance().folderOf(kAlarms));
    measure(state, "coldStockWalk", agent, walkStock, kAlarms);
}

void warmStockWalk(benchmark::State& state)
{
    const auto agent = AlarmAgent::talvik(Bench::instance().folderOf(kAlarms));
    walkStock(agent, kAlarms * kAlarmColumns);
    measure(state, "warmStockWalk", agent, walkStock, kAlarms);
}

void containerStockWalk(benchmark::State& state)
{
    measure(state, "containerStockWalk", Bench::instance().container(), walkStock, kAlarms);
}

void coldWalkOfMany(benchmark::State& state)
{
    const auto agent = AlarmAgent::talvik(Bench::instance().folderOf(kManyAlarms));
    measure(state, "coldWalkOfMany", agent, walkLean, kManyAlarms);
}

BENCHMARK(coldWalk)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(containerWalk)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(coldStockWalk)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(containerStockWalk)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(warmWalk)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(warmStockWalk)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(coldWalkOfMany)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(3)
    ->Unit(benchmark::kMillisecond);

const std::vector<Target> kTargets = {
    {"coldWalk", "containerWalk", 0.8},
    {"coldStockWalk", "containerStockWalk", 0.9},
    {"warmWalk", "containerWalk", 0},
    {"warmStockWalk", "containerStockWalk", 0},
};

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void reportCosts()
{
    std::puts("\nnanoseconds a variable, medians: on the wall, and of the agent's processor time");
    for (const auto& [name, each] : costs) {
        std::printf("%-18s %7.0f %7.0f\n", name.c_str(), median(each.wall), median(each.agent));
    }
    const auto few = costs.find("coldWalk");
    const auto many = costs.find("coldWalkOfMany");
    if (few != costs.end() && many != costs.end()) {
        std::printf("a row of %u beside a row of %u, cold: %.2f, of the agent's processor time "
                    "%.2f (target 1, linear)\n",
                    kManyAlarms, kAlarms, median(many->second.wall) / median(few->second.wall),
                    median(many->second.agent) / median(few->second.agent));
    }
}

void stayOnOneProcessor()
{
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) {
        std::size_t last = CPU_SETSIZE - 1;
        while (last > 0 && !CPU_ISSET(last, &allowed)) {
            --last;
        }
        CPU_ZERO(&allowed);
        CPU_SET(last, &allowed);
        if (sched_setaffinity(0, sizeof allowed, &allowed) == 0) {
            return;
        }
    }
    throw std::system_error(errno, std::generic_category(), "cannot stay on one processor");
}

int run(int argc, char** argv)
{
    stayOnOneProcessor();
    setenv("MIBS", "", 1);
    init_snmp("talvik-bench");
    const int status = runBenchmarks(
        argc, argv, {"--benchmark_repetitions=7", "--benchmark_enable_random_interleaving=true"},
        kTargets, RatioReporter::Clock::Wall);
    reportCosts();
    return status;
}

}  // namespace

}  // namespace talvik::bench

int main(int argc, char** argv)
{
    try {
        if (argc == 5 && std::strcmp(argv[1], talvik::bench::kServeContainer) == 0) {
            const auto port = static_cast<unsigned>(std::stoul(argv[2]));
            talvik::bench::serveContainer(port, talvik::bench::readRows(argv[4]), argv[3]);
        }
        return talvik::bench::run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "talvik-bench-alarms: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
