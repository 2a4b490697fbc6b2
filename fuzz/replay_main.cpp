// Runs a fuzz target over files and folders of files, as libFuzzer would with nothing to discover.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

bool replay(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in),
                                  std::istreambuf_iterator<char>()};
    if (!in) {
        std::fprintf(stderr, "cannot read %s: check that the file exists and is readable\n",
                     file.c_str());
        return false;
    }
    // Named first: when the property aborts, this is the input that did it.
    std::printf("%s (%zu bytes)\n", file.c_str(), bytes.size());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return true;
}

std::vector<fs::path> filesIn(const fs::path& place)
{
    if (!fs::is_directory(place)) {
        return {place};
    }
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(place)) {
        files.push_back(entry.path());
    }
    return files;
}

}  // namespace

int main(int argc, char** argv)
{
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (const fs::path& file : filesIn(argv[i])) {
            if (!replay(file)) {
                return 1;
            }
            ++replayed;
        }
    }
    if (replayed == 0) {
        std::fprintf(stderr, "nothing to replay: name files or folders of a corpus\n");
        return 1;
    }
    return 0;
}
