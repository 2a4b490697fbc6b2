#include "bench/plain_package.h"
#include "bench/ratio_reporter.h"
#include "bench/sample_package.h"
#include "reference_package.pb.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace talvik::bench {

namespace {

constexpr std::size_t kHeaderSize = sizeof(TLVMsgHeadV3);

void count(benchmark::State& state, std::size_t bytes)
{
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kRecords * kCells));
}

void decode(benchmark::State& state)
{
    auto bytes = encodedSample();
    const auto size = static_cast<unsigned>(bytes.size());
    for (auto _ : state) {
        Package package;
        if (package.decode(bytes.data(), size) == Package::FAILED) {
            state.SkipWithError("the sample was refused");
            break;
        }
        benchmark::DoNotOptimize(package.oRecords.data());
    }
    count(state, bytes.size());
}

void decodePlainStructs(benchmark::State& state)
{
    const auto bytes = encodedSample();
    for (auto _ : state) {
        auto package = decodePlain(bytes.data() + kHeaderSize, bytes.size() - kHeaderSize);
        benchmark::DoNotOptimize(package.data());
        destroyPlain(package);
    }
    count(state, bytes.size());
}

template <typename ProtobufPackage>
void parse(benchmark::State& state)
{
    const auto bytes = encodedProtobufSample<ProtobufPackage>();
    for (auto _ : state) {
        ProtobufPackage package;
        if (!package.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) {
            state.SkipWithError("the sample was refused");
            break;
        }
        benchmark::DoNotOptimize(package);
    }
    count(state, bytes.size());
}

void decodeProtobuf(benchmark::State& state)
{
    parse<protobuf::Package>(state);
}

void decodeProtobufTyped(benchmark::State& state)
{
    parse<protobuf::TypedPackage>(state);
}

void decodeProtobufLean(benchmark::State& state)
{
    parse<protobuf::LeanPackage>(state);
}

void encode(benchmark::State& state)
{
    Package package;
    auto sample = encodedSample();
    package.decode(sample.data(), static_cast<unsigned>(sample.size()));
    u_int size = 0;
    for (auto _ : state) {
        unsigned char* bytes = nullptr;
        size = package.encode(bytes);
        benchmark::DoNotOptimize(bytes);
        benchmark::ClobberMemory();
        delete[] bytes;
    }
    count(state, size);
}

void encodePlainCopies(benchmark::State& state)
{
    const auto sample = encodedSample();
    unsigned char header[kHeaderSize];
    std::memcpy(header, sample.data(), sizeof header);
    auto package = decodePlain(sample.data() + kHeaderSize, sample.size() - kHeaderSize);
    std::size_t size = 0;
    for (auto _ : state) {
        unsigned char* bytes = encodePlain(package, header, size);
        benchmark::DoNotOptimize(bytes);
        benchmark::ClobberMemory();
        delete[] bytes;
    }
    count(state, size);
    destroyPlain(package);
}

void encodeProtobuf(benchmark::State& state)
{
    protobuf::Package package;
    package.ParseFromString(encodedProtobufSample<protobuf::Package>());
    std::size_t size = 0;
    for (auto _ : state) {
        const std::string bytes = package.SerializeAsString();
        size = bytes.size();
        benchmark::DoNotOptimize(bytes.data());
    }
    count(state, size);
}

void findByTag(benchmark::State& state)
{
    Package package;
    auto sample = encodedSample();
    package.decode(sample.data(), static_cast<unsigned>(sample.size()));
    const CTLVRecordV3& record = *package[0];
    constexpr std::array<unsigned short, 16> kTags = {7, 1,  12, 4, 9, 2, 11, 5,
                                                      3, 10, 6,  8, 1, 7, 12, 2};
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(record.find(kTags[next]));
        next = (next + 1) % kTags.size();
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(decode)->Unit(benchmark::kMicrosecond);
BENCHMARK(decodePlainStructs)->Unit(benchmark::kMicrosecond);
BENCHMARK(decodeProtobuf)->Unit(benchmark::kMicrosecond);
BENCHMARK(decodeProtobufTyped)->Unit(benchmark::kMicrosecond);
BENCHMARK(decodeProtobufLean)->Unit(benchmark::kMicrosecond);
BENCHMARK(encode)->Unit(benchmark::kMicrosecond);
BENCHMARK(encodePlainCopies)->Unit(benchmark::kMicrosecond);
BENCHMARK(encodeProtobuf)->Unit(benchmark::kMicrosecond);
BENCHMARK(findByTag);

const std::vector<Target> kTargets = {
    {"decode", "decodeProtobuf", 1.0},     {"decode", "decodeProtobufTyped", 0},
    {"decode", "decodeProtobufLean", 0},   {"decode", "decodePlainStructs", 0},
    {"encode", "encodePlainCopies", 1.15}, {"findByTag", nullptr, 5.0},
};

}  // namespace

}  // namespace talvik::bench

int main(int argc, char** argv)
{
    // Others use the machine too: short repetitions in mixed order, of which the summary takes
    // medians.
    return talvik::bench::runBenchmarks(argc, argv,
                                        {"--benchmark_repetitions=15", "--benchmark_min_time=0.1",
                                         "--benchmark_enable_random_interleaving=true"},
                                        talvik::bench::kTargets);
}
