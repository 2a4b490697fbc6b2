// The alarm catalogue: loading it beside JsonCpp's bare parse of the same files, and the texts of
// one alarm beside a precompiled expander and a naive one.
#include "alarmconfig/alarm_config_parser.h"
#include "bench/agent_process.h"
#include "bench/peak_memory.h"
#include "bench/quiet_host.h"
#include "bench/ratio_reporter.h"
#include "bench/sample_catalogue.h"
#include "bench/text_expanders.h"

#include <benchmark/benchmark.h>
#include <json/json.h>

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace talvik::bench {

namespace {

constexpr unsigned kDefinitions = 10'000;
constexpr unsigned kEnumValues = 1'000;
constexpr int kLoads = 21;  // repetitions: of few iterations each
constexpr std::uint64_t kAlarm = SampleCatalogue::kFirstId + 1;

std::string& catalogueFolder()
{
    static std::string folder;
    return folder;
}

/// The folder of a catalogue with that many definitions, made when it is first asked for.
std::string catalogueOf(unsigned definitions)
{
    const auto folder = catalogueFolder() + "/" + std::to_string(definitions);
    if (std::filesystem::create_directory(folder)) {
        SampleCatalogue::write(folder, definitions, kEnumValues);
    }
    return folder;
}

Json::Value parsed(const std::string& path)
{
    std::ifstream file(path);
    Json::Value document;
    std::string errors;
    if (!Json::parseFromStream(Json::CharReaderBuilder(), file, &document, &errors)) {
        throw std::runtime_error(path + ": " + errors);
    }
    return document;
}

/// Reads both files of the catalogue in `folder`, one after the other as a load does.
void parseOnce(const std::string& folder)
{
    for (const char* file : {"/definitions.json", "/enumerations.json"}) {
        const auto document = parsed(folder + file);
        benchmark::DoNotOptimize(&document);
    }
}

/// Loads the catalogue in `folder`; none may be loaded.
void loadOnce(const std::string& folder)
{
    setCatalogueFolder(folder);
    CAlarmConfigParser::instance();
}

/// Runs `work` again and again, each time on a heap such as an agent starts with: the allocator
/// puts off part of what freeing costs, which the next to run would pay for otherwise. An agent
/// never drops its catalogue, so that is not measured either.
template <typename Work>
void measureAfresh(benchmark::State& state, Work work)
{
    for (auto _ : state) {
        state.PauseTiming();
        CAlarmConfigParser::destroy();
        malloc_trim(0);
        state.ResumeTiming();
        work();
    }
    CAlarmConfigParser::destroy();
}

void load(benchmark::State& state)
{
    const auto folder = catalogueOf(kDefinitions);
    measureAfresh(state, [&] { loadOnce(folder); });
    state.SetItemsProcessed(state.iterations() * std::int64_t{kDefinitions});
}

void parseBare(benchmark::State& state)
{
    const auto folder = catalogueOf(kDefinitions);
    measureAfresh(state, [&] { parseOnce(folder); });
    state.SetItemsProcessed(state.iterations() * std::int64_t{kDefinitions});
}

struct Texts {
    std::string location;
    std::string detail;
    std::string name;
    std::string suggestion;
    u_int id = 0;
};

void lookUp(benchmark::State& state, unsigned definitions)
{
    loadOnce(catalogueOf(definitions));
    auto* parser = CAlarmConfigParser::instance();
    const std::string parameters = SampleCatalogue::kParameters;
    Texts texts;
    for (auto _ : state) {
        const int result = parser->getAlarmInfo(kAlarm, parameters, texts.location, texts.detail,
                                                texts.id, texts.name, texts.suggestion);
        benchmark::DoNotOptimize(result);
    }
    if (texts.detail != expandNaively(SampleCatalogue::kDetail, parameters)) {
        state.SkipWithError(("unexpected text: " + texts.detail).c_str());
    }
    CAlarmConfigParser::destroy();
}

void getAlarmInfo(benchmark::State& state)
{
    lookUp(state, kDefinitions);
}

void getAlarmInfoOf100(benchmark::State& state)
{
    lookUp(state, 100);
}

void getAlarmInfoOf100000(benchmark::State& state)
{
    lookUp(state, 100'000);
}

void expandPrecompiled(benchmark::State& state)
{
    const PrecompiledText location(SampleCatalogue::kLocation);
    const PrecompiledText detail(SampleCatalogue::kDetail);
    const PrecompiledText suggestion(SampleCatalogue::kSuggestion);
    const std::string parameters = SampleCatalogue::kParameters;
    std::vector<std::string_view> fields;
    std::string out;
    for (auto _ : state) {
        splitFields(parameters, fields);
        for (const auto* text : {&location, &detail, &suggestion}) {
            text->expand(fields, out);
            benchmark::DoNotOptimize(out.data());
        }
    }
}

void expandNaive(benchmark::State& state)
{
    const std::string parameters = SampleCatalogue::kParameters;
    for (auto _ : state) {
        for (const char* text :
             {SampleCatalogue::kLocation, SampleCatalogue::kDetail, SampleCatalogue::kSuggestion}) {
            const auto out = expandNaively(text, parameters);
            benchmark::DoNotOptimize(out.data());
        }
    }
}

BENCHMARK(load)->Unit(benchmark::kMillisecond)->Repetitions(kLoads);
BENCHMARK(parseBare)->Unit(benchmark::kMillisecond)->Repetitions(kLoads);
BENCHMARK(getAlarmInfo);
BENCHMARK(getAlarmInfoOf100);
BENCHMARK(getAlarmInfoOf100000);
BENCHMARK(expandPrecompiled);
BENCHMARK(expandNaive);

const std::vector<Target> kTargets = {
    {"load", "parseBare", 1.2},
    {"getAlarmInfo", "expandPrecompiled", 6.0},
    {"getAlarmInfo", "expandNaive", 0.5},
    {"getAlarmInfoOf100000", "getAlarmInfoOf100", 0},
};

/// Peak resident memory of loading and of the bare parse, each above that of doing nothing, in
/// processes of their own.
void showPeakMemory()
{
    // Made in a process of its own too, so that no memory of this one can serve again.
    peakMemoryOf([] { catalogueOf(kDefinitions); });
    const auto folder = catalogueOf(kDefinitions);
    const auto nothing = peakMemoryOf([] {});
    const auto loaded = peakMemoryOf([&] { loadOnce(folder); }) - nothing;
    const auto bare = peakMemoryOf([&] { parseOnce(folder); }) - nothing;
    std::cout << "peak memory of load / of parseBare = "
              << static_cast<double>(loaded) / static_cast<double>(bare) << " (" << loaded
              << " KiB / " << bare << " KiB, target 1.3)\n";
}

int run(int argc, char** argv)
{
    const WorkFolder folder;
    catalogueFolder() = folder.path();
    showPeakMemory();
    return runBenchmarks(argc, argv,
                         {"--benchmark_repetitions=9", "--benchmark_min_time=0.1",
                          "--benchmark_enable_random_interleaving=true"},
                         kTargets);
}

}  // namespace

}  // namespace talvik::bench

int main(int argc, char** argv)
{
    try {
        return talvik::bench::run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "talvik-bench-alarm-texts: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
