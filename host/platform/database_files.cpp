#include "host/platform/database_files.h"

#include "host/startup_error.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>

namespace talvik {

namespace {

constexpr mode_t kOwnerFile = 0600;
constexpr mode_t kPermissions = 07777;
// Many times what a full list takes: checking the file must not hold the start up.
constexpr off_t kMaxFileSize = off_t{64} << 20U;
constexpr off_t kHeaderSize = 100;

/// The database itself and what SQLite keeps beside it.
constexpr const char* kSuffixes[] = {"", "-wal", "-shm", "-journal"};

[[noreturn]] void refuse(const char* what, const std::string& path)
{
    throw StartupError(std::string("cannot ") + what + " " + path + ": " + std::strerror(errno));
}

/// Nothing if there is no such file.
std::optional<struct stat> factsOf(const std::string& path)
{
    struct stat facts = {};
    if (::lstat(path.c_str(), &facts) == 0) {
        return facts;
    }
    if (errno != ENOENT) {
        refuse("look at", path);
    }
    return std::nullopt;
}

bool hasContent(const std::string& path)
{
    const auto facts = factsOf(path);
    return facts && facts->st_size > 0;
}

void syncDirectoryOf(const std::string& path)
{
    const auto parent = std::filesystem::path(path).parent_path().string();
    const int directory = ::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool done = directory >= 0 && ::fsync(directory) == 0;
    const auto reason = errno;
    if (directory >= 0) {
        ::close(directory);
    }
    if (!done) {
        errno = reason;
        refuse("make durable what is in", parent);
    }
}

void create(const std::string& path)
{
    const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerFile);
    if (file < 0) {
        refuse("create", path);
    }
    ::close(file);
    syncDirectoryOf(path);
}

std::string freeName(const std::string& path)
{
    for (int n = 1;; ++n) {
        auto name = path + ".damaged-" + std::to_string(n);
        bool taken = false;
        for (const auto* suffix : kSuffixes) {
            taken = taken || factsOf(name + suffix).has_value();
        }
        if (!taken) {
            return name;
        }
    }
}

}  // namespace

void prepareDatabaseFile(const std::string& path)
{
    const auto facts = factsOf(path);
    // SQLite throws away the log of a file without content.
    if ((!facts || facts->st_size == 0) && hasContent(path + "-wal")) {
        throw DamagedFile("its write-ahead log is there, but its own content is gone");
    }
    if (!facts) {
        create(path);
        return;
    }
    if (!S_ISREG(facts->st_mode)) {
        throw StartupError("cannot use " + path +
                           ": it is no regular file. Move it away; the agent makes a new one");
    }
    // By name: closing a descriptor of the file would give up the locks that the process has on it.
    if ((facts->st_mode & kPermissions) != kOwnerFile && ::chmod(path.c_str(), kOwnerFile) != 0) {
        refuse("protect", path);
    }
    // Not left to SQLite, to which a single octet is a new file.
    if (facts->st_size > 0 && facts->st_size < kHeaderSize) {
        throw DamagedFile("it ends within its header");
    }
    if (facts->st_size > kMaxFileSize) {
        throw DamagedFile("it is larger than 64 MiB");
    }
}

SetAside setDatabaseAside(const std::string& path)
{
    const SetAside aside{freeName(path), hasContent(path)};
    // The database goes first: cut short, what is left of it is known by its log.
    for (const auto* suffix : kSuffixes) {
        const auto from = path + suffix;
        const auto to = aside.path + suffix;
        if (factsOf(from) && std::rename(from.c_str(), to.c_str()) != 0) {
            refuse("set aside", from);
        }
    }
    syncDirectoryOf(path);
    return aside;
}

}  // namespace talvik
