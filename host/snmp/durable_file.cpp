#include "host/snmp/durable_file.h"

#include "host/startup_error.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace talvik {

namespace {

constexpr mode_t kOwnerFile = 0600;
constexpr mode_t kOwnerDirectory = 0700;
constexpr off_t kMaxFileSize = off_t{16} << 20U;

[[noreturn]] void refuse(const char* what, const std::string& path)
{
    throw StartupError(std::string("cannot ") + what + " " + path + ": " + std::strerror(errno));
}

/// A file descriptor that is closed at the end.
class Descriptor {
public:
    Descriptor(const std::string& path, int flags, mode_t mode = 0)
        : value_(::open(path.c_str(), flags | O_CLOEXEC, mode))
    {
    }

    ~Descriptor()
    {
        if (value_ >= 0) {
            ::close(value_);
        }
    }

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return value_ >= 0; }
    int get() const { return value_; }

private:
    int value_;
};

void requireOrdinaryFile(const Descriptor& file, const std::string& path)
{
    struct stat facts = {};
    if (::fstat(file.get(), &facts) != 0) {
        refuse("read", path);
    }
    if (!S_ISREG(facts.st_mode)) {
        throw StartupError("cannot read " + path + ": it is no regular file");
    }
    if (facts.st_size > kMaxFileSize) {
        throw StartupError("cannot read " + path + ": it is larger than 16 MiB");
    }
}

void syncDirectoryOf(const std::string& path)
{
    const auto parent = std::filesystem::path(path).parent_path().string();
    const Descriptor directory(parent.empty() ? "." : parent, O_RDONLY | O_DIRECTORY);
    if (!directory.isOpen() || ::fsync(directory.get()) != 0) {
        refuse("make durable what is in", parent);
    }
}

void writeAll(const Descriptor& file, const std::string& content, const std::string& path)
{
    std::size_t done = 0;
    while (done < content.size()) {
        const auto count = ::write(file.get(), content.data() + done, content.size() - done);
        if (count < 0 && errno != EINTR) {
            refuse("write", path);
        }
        done += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
}

}  // namespace

std::optional<std::string> readFile(const std::string& path)
{
    // Without O_NONBLOCK a pipe would hold the start up until somebody writes to it.
    const Descriptor file(path, O_RDONLY | O_NONBLOCK);
    if (!file.isOpen()) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        refuse("read", path);
    }
    requireOrdinaryFile(file, path);
    std::string content;
    char buffer[4096];
    while (true) {
        const auto count = ::read(file.get(), buffer, sizeof(buffer));
        if (count == 0) {
            return content;
        }
        if (count > 0) {
            content.append(buffer, static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            refuse("read", path);
        }
    }
}

void writeDurably(const std::string& path, const std::string& content)
{
    const auto fresh = path + ".new";
    {
        const Descriptor file(fresh, O_WRONLY | O_CREAT | O_TRUNC, kOwnerFile);
        if (!file.isOpen()) {
            refuse("create", fresh);
        }
        writeAll(file, content, fresh);
        if (::fchmod(file.get(), kOwnerFile) != 0 || ::fsync(file.get()) != 0) {
            refuse("write", fresh);
        }
    }
    renameDurably(fresh, path);
}

void renameDurably(const std::string& from, const std::string& to)
{
    if (std::rename(from.c_str(), to.c_str()) != 0) {
        refuse("replace", to);
    }
    syncDirectoryOf(to);
}

void removeDurably(const std::string& path)
{
    if (::unlink(path.c_str()) != 0) {
        if (errno == ENOENT) {
            return;
        }
        refuse("remove", path);
    }
    syncDirectoryOf(path);
}

void makePrivateDirectory(const std::string& path)
{
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
    if (::mkdir(path.c_str(), kOwnerDirectory) != 0 && errno != EEXIST) {
        refuse("create the directory", path);
    }
    if (!std::filesystem::is_directory(path, error)) {
        errno = ENOTDIR;
        refuse("use as a directory", path);
    }
    if (::chmod(path.c_str(), kOwnerDirectory) != 0) {
        refuse("protect the directory", path);
    }
}

}  // namespace talvik
