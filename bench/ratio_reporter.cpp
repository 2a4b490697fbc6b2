#include "bench/ratio_reporter.h"

#include <algorithm>
#include <cstdlib>
#include <iomanip>
#include <ostream>

namespace talvik::bench {

namespace {

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double least(const std::vector<double>& values)
{
    return *std::min_element(values.begin(), values.end());
}

}  // namespace

void RatioReporter::ReportRuns(const std::vector<Run>& runs)
{
    benchmark::ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
            const double seconds =
                clock_ == Clock::Cpu ? run.cpu_accumulated_time : run.real_accumulated_time;
            nanoseconds_[run.run_name.function_name].push_back(seconds * 1e9 /
                                                               static_cast<double>(run.iterations));
        }
    }
}

void RatioReporter::report(const Target& target)
{
    const auto& own = nanoseconds_[target.benchmark];
    const std::vector<double> one = {1.0};
    const auto& reference = target.reference == nullptr ? one : nanoseconds_[target.reference];
    if (own.empty() || reference.empty()) {
        return;  // left out on the command line
    }
    auto& out = GetOutputStream();
    out << target.benchmark;
    if (target.reference != nullptr) {
        out << " / " << target.reference;
    }
    out << " = " << median(own) / median(reference) << ", least " << least(own) / least(reference);
    if (target.atMost != 0) {
        out << " (target " << target.atMost << ')';
    }
    out << (target.reference == nullptr ? " ns\n" : "\n");
}

void RatioReporter::Finalize()
{
    benchmark::ConsoleReporter::Finalize();
    GetOutputStream() << "\nmedians of the repetitions, "
                      << (clock_ == Clock::Cpu ? "CPU time\n" : "time on the wall\n") << std::fixed
                      << std::setprecision(2);
    for (const Target& target : targets_) {
        report(target);
    }
    GetOutputStream().flush();
}

int runBenchmarks(int argc, char** argv, std::vector<std::string> options,
                  std::vector<Target> targets, RatioReporter::Clock clock)
{
    options.insert(options.begin(), argv[0]);
    options.insert(options.end(), argv + 1, argv + argc);
    std::vector<char*> arguments;
    arguments.reserve(options.size());
    for (std::string& option : options) {
        arguments.push_back(option.data());
    }
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return EXIT_FAILURE;
    }
    RatioReporter reporter(std::move(targets), clock);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return EXIT_SUCCESS;
}

}  // namespace talvik::bench
