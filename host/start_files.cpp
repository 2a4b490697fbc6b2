#include "host/start_files.h"

#include "host/platform/host_log.h"

#include <sys/stat.h>

#include <algorithm>

namespace talvik {

namespace {

/// Another text for another file, or for one that was written since.
std::string stampOf(const std::string& file)
{
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) {
        return "";
    }
    std::string stamp;
    for (const long long part :
         {static_cast<long long>(status.st_ino), static_cast<long long>(status.st_size),
          static_cast<long long>(status.st_mtim.tv_sec),
          static_cast<long long>(status.st_mtim.tv_nsec)}) {
        stamp += std::to_string(part) + ' ';
    }
    return stamp;
}

}  // namespace

void StartFiles::add(const std::string& file)
{
    const bool known = std::any_of(files_.begin(), files_.end(),
                                   [&](const auto& noted) { return noted.first == file; });
    if (!known) {
        files_.emplace_back(file, stampOf(file));
    }
}

void StartFiles::report() const
{
    for (const auto& [file, stamp] : files_) {
        if (stampOf(file) == stamp) {
            hostLog()->info("SIGHUP: {}: unchanged", file);
        } else {
            hostLog()->warn("SIGHUP: {}: has changed; it is read at the start only, restart the "
                            "agent to take it over",
                            file);
        }
    }
}

}  // namespace talvik
