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
#include <utility>

namespace talvik {

namespace {

constexpr mode_t kOwnerFile = 0600;
constexpr mode_t kPermissions = 07777;
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

/// Removes what is there of the database `path`.
void removeAll(const std::string& path)
{
    for (const auto* suffix : kSuffixes) {
        const auto name = path + suffix;
        if (::unlink(name.c_str()) != 0 && errno != ENOENT) {
            refuse("remove", name);
        }
    }
}

void create(const std::string& path, const std::function<void(const std::string& path)>& fill)
{
    const auto unfinished = path + ".new";
    removeAll(unfinished);  // of an agent that was killed meanwhile
    const int file = ::open(unfinished.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerFile);
    if (file < 0) {
        refuse("create", unfinished);
    }
    ::close(file);
    fill(unfinished);
    if (std::rename(unfinished.c_str(), path.c_str()) != 0) {
        refuse("create", path);
    }
    syncDirectoryOf(path);
}

std::string asideName(const std::string& path, int n)
{
    return path + ".damaged-" + std::to_string(n);
}

/// The mark of a database that is being set aside: renaming its files is no single step.
constexpr const char* kMark = ".moving";

bool isTaken(const std::string& name)
{
    bool taken = false;
    for (const auto* suffix : kSuffixes) {
        taken = taken || factsOf(name + suffix).has_value();
    }
    return taken;
}

/// The first name that nothing has, but one with the mark goes before.
std::string nameFor(const std::string& path)
{
    int n = 1;
    while (!factsOf(asideName(path, n) + kMark) && isTaken(asideName(path, n))) {
        ++n;
    }
    return asideName(path, n);
}

/// Nothing but a new file is made where the mark is.
void setMark(const std::string& name)
{
    const int file = ::open((name + kMark).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerFile);
    if (file < 0) {
        refuse("create", name + kMark);
    }
    ::close(file);
    syncDirectoryOf(name);
}

void removeMark(const std::string& name)
{
    if (::unlink((name + kMark).c_str()) != 0 && errno != ENOENT) {
        refuse("remove", name + kMark);
    }
}

}  // namespace

void prepareDatabaseFile(const std::string& path,
                         const std::function<void(const std::string& path)>& fill,
                         std::int64_t maxSize)
{
    const auto facts = factsOf(path);
    const auto aside = nameFor(path);
    if (factsOf(aside + kMark)) {
        if (!facts) {
            throw DamagedFile("it was found damaged before, and setting it aside was cut short");
        }
        removeMark(aside);  // cut short before anything was moved, or restored since
    }
    // SQLite throws away the log of a file without content, and applies a journal to a new one.
    if ((!facts || facts->st_size == 0) &&
        (hasContent(path + "-wal") || hasContent(path + "-journal"))) {
        throw DamagedFile("its write-ahead log is there, but its own content is gone");
    }
    if (!facts) {
        create(path, fill);
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
    // Not left to SQLite, to which an empty file or a single octet is a new one.
    if (facts->st_size == 0) {
        throw DamagedFile("its content is gone");
    }
    if (facts->st_size < kHeaderSize) {
        throw DamagedFile("it ends within its header");
    }
    if (facts->st_size > maxSize) {
        throw DamagedFile("it is larger than " + std::to_string(maxSize >> 20U) + " MiB");
    }
}

FileIdentity::FileIdentity(std::string path) : path_(std::move(path))
{
    const auto facts = factsOf(path_);
    if (!facts) {
        throw StartupError("cannot use " + path_ + ": it was removed while the agent started");
    }
    device_ = facts->st_dev;
    number_ = facts->st_ino;
}

bool FileIdentity::wasMoved() const
{
    struct stat facts = {};
    return ::lstat(path_.c_str(), &facts) != 0 || facts.st_dev != device_ ||
           facts.st_ino != number_;
}

SetAside setDatabaseAside(const std::string& path)
{
    const auto name = nameFor(path);
    setMark(name);
    for (const auto* suffix : kSuffixes) {
        const auto from = path + suffix;
        const auto to = name + suffix;
        if (factsOf(from) && std::rename(from.c_str(), to.c_str()) != 0) {
            refuse("set aside", from);
        }
    }
    syncDirectoryOf(path);
    removeMark(name);
    return {name, hasContent(name)};
}

}  // namespace talvik
