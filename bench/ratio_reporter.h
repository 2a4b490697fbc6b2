#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace talvik::bench {

/// One line of the summary: what is measured, against what, and what it may be at most.
struct Target {
    const char* benchmark;
    const char* reference;  ///< null: the target is in nanoseconds
    double atMost;          ///< 0: for comparison only
};

/// Prints what the console reporter says of the repetitions together, then the targets with what
/// the repetitions gave for them.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    /// CPU time of this process, or time on the wall for what waits for a disk or another process.
    enum class Clock { Cpu, Wall };

    explicit RatioReporter(std::vector<Target> targets, Clock clock = Clock::Cpu)
        : targets_(std::move(targets)),
          clock_(clock)
    {
    }

    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    void report(const Target& target);

    std::vector<Target> targets_;
    Clock clock_;
    std::map<std::string, std::vector<double>> nanoseconds_;  // of each repetition, by benchmark
};

/// Runs the registered benchmarks and reports `targets`. `options` are Google Benchmark's; those on
/// the command line come later and win. The exit status of the program.
int runBenchmarks(int argc, char** argv, std::vector<std::string> options,
                  std::vector<Target> targets,
                  RatioReporter::Clock clock = RatioReporter::Clock::Cpu);

}  // namespace talvik::bench
