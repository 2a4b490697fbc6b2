#include "tools/catalogue/ordinary_file.h"

#include "host/startup_error.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace talvik::ctl {

namespace {

constexpr std::uintmax_t kMaxFileSize = std::uintmax_t{64} << 20U;

}  // namespace

void requireOrdinaryFile(const std::string& path)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw StartupError("cannot read " + path + ": it is no regular file");
    }
    const auto size = std::filesystem::file_size(path, error);
    if (!error && size > kMaxFileSize) {
        throw StartupError("cannot read " + path + ": it is larger than 64 MiB");
    }
}

std::string readOrdinaryFile(const std::string& path)
{
    requireOrdinaryFile(path);
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (!in.is_open() || in.bad()) {
        throw StartupError("cannot read " + path + ": " + std::strerror(errno));
    }
    return text;
}

}  // namespace talvik::ctl
