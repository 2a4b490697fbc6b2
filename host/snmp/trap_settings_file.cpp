#include "host/snmp/trap_settings_file.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/startup_error.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace talvik {

namespace {

/// A look costs about a microsecond, on a file system of the network more: a storm has few of them.
constexpr auto kLookEvery = std::chrono::milliseconds(1);
constexpr std::size_t kMaxFile = 1U << 20U;

class Descriptor {
public:
    /// Does not wait for the writer of a FIFO.
    explicit Descriptor(const std::string& path)
        : fd(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY))
    {
    }
    ~Descriptor()
    {
        if (fd >= 0) {
            close(fd);
        }
    }

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    const int fd;
};

std::tuple<std::uint64_t, std::int64_t, std::int64_t, std::int64_t> identityOf(const struct stat& s)
{
    return {s.st_ino, s.st_size, s.st_mtim.tv_sec, s.st_mtim.tv_nsec};
}

[[noreturn]] void refuse(const std::string& path, const std::string& reason)
{
    throw StartupError("trap settings " + path + ": " + reason);
}

}  // namespace

/// The content; empty for no file. Notes what it was read from first: a change while it is read is
/// seen at the next look.
std::string TrapSettingsFile::read()
{
    known_ = {};
    const Descriptor file(path_);
    if (file.fd < 0 && errno == ENOENT) {
        return "";
    }
    struct stat status {};
    if (file.fd < 0 || fstat(file.fd, &status) != 0) {
        refuse(path_, std::string("cannot be read: ") + std::strerror(errno));
    }
    known_ = identityOf(status);
    mode_ = status.st_mode;
    if (!S_ISREG(status.st_mode)) {
        refuse(path_, "is no ordinary file");
    }
    std::string content(kMaxFile + 1, '\0');
    std::size_t size = 0;
    for (ssize_t got = 1; got > 0 && size < content.size(); size += static_cast<std::size_t>(got)) {
        got = ::read(file.fd, content.data() + size, content.size() - size);
        if (got < 0) {
            refuse(path_, std::string("cannot be read: ") + std::strerror(errno));
        }
    }
    if (size > kMaxFile) {
        refuse(path_, "is larger than 1 MiB");
    }
    content.resize(size);
    if (content.empty()) {
        refuse(path_, "is empty; remove it, or write {} for the defaults");
    }
    return content;
}

TrapSettings TrapSettingsFile::load()
{
    if (path_.empty()) {
        return {};
    }
    auto content = read();
    if (content.empty()) {
        return {};
    }
    try {
        auto settings = parseTrapSettings(content, path_);
        wipe(content);
        warnOfReaders(settings);
        return settings;
    } catch (...) {
        wipe(content);
        throw;
    }
}

std::optional<TrapSettings> TrapSettingsFile::changed(Time now)
{
    if (path_.empty() || now < nextLook_) {
        return std::nullopt;
    }
    nextLook_ = now + kLookEvery;
    if (identityNow() == known_) {
        return std::nullopt;
    }
    try {
        auto settings = load();
        hostLog()->info("trap settings {}: {}", path_,
                        known_ == Identity{} ? "the file is gone, the defaults hold now"
                                             : "read again");
        return settings;
    } catch (const StartupError& error) {
        hostLog()->error("{}; the former settings stay in use", oneLine(error.what()));
        known_ = identityNow();
        return std::nullopt;
    }
}

std::optional<TrapSettings> TrapSettingsFile::readAgain(Time now)
{
    if (path_.empty() || (known_ == Identity{} && identityNow() == Identity{})) {
        hostLog()->info("trap settings {}: there is no such file, the defaults hold", path_);
        return std::nullopt;
    }
    known_ = Identity(0, -1, 0, 0);  // no file's
    nextLook_ = Time::min();
    return changed(now);
}

TrapSettingsFile::Identity TrapSettingsFile::identityNow() const
{
    struct stat status {};
    return stat(path_.c_str(), &status) == 0 ? Identity(identityOf(status)) : Identity{};
}

void TrapSettingsFile::warnOfReaders(const TrapSettings& settings) const
{
    if (!settings.users.empty() && (mode_ & (S_IRWXG | S_IRWXO)) != 0) {
        hostLog()->warn("trap settings {}: others than its owner have access to the passphrases in "
                        "it; chmod 600 it",
                        path_);
    }
}

}  // namespace talvik
