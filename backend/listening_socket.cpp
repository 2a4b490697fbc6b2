#include "backend/listening_socket.h"

#include "backend/backend_log.h"
#include "backend/unix_address.h"
#include "host/startup_error.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace talvik::backend {

namespace {

constexpr int kBacklog = 32;
constexpr mode_t kMode = 0660;
constexpr int kLockAttempts = 100;
constexpr int kLockPauseMs = 20;

[[noreturn]] void refuse(const std::string& path, const std::string& reason)
{
    throw StartupError("cannot listen on unix:" + path + ": " + reason);
}

[[noreturn]] void refuseBySystem(const std::string& path, const std::string& call)
{
    const int error = errno;
    refuse(path, call + ": " + std::strerror(error));
}

FileDescriptor newSocket(const std::string& path)
{
    FileDescriptor fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!fd) {
        refuseBySystem(path, "no socket");
    }
    return fd;
}

std::string directoryOf(const std::string& path)
{
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// Keeps two back ends that start at once from taking each other's fresh socket for one left
/// behind. The lock goes with the descriptor.
FileDescriptor lockDirectory(const std::string& path)
{
    const auto directory = directoryOf(path);
    FileDescriptor fd(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd) {
        refuseBySystem(path, "the directory " + directory + " cannot be opened");
    }
    for (int attempt = 0; ::flock(fd.get(), LOCK_EX | LOCK_NB) != 0; ++attempt) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || attempt == kLockAttempts) {
            refuseBySystem(path, "the directory " + directory + " cannot be locked");
        }
        ::poll(nullptr, 0, kLockPauseMs);
    }
    return fd;
}

/// Removes a socket file that nobody listens on any more; refuses whatever else stands at `path`.
void clearTheWay(const std::string& path, const sockaddr_un& address)
{
    struct stat found {};
    if (::lstat(path.c_str(), &found) != 0) {
        if (errno == ENOENT) {
            return;
        }
        refuseBySystem(path, "the path cannot be looked at");
    }
    if (!S_ISSOCK(found.st_mode)) {
        refuse(path, "something that is not a socket is there already: choose another path");
    }
    const auto probe = newSocket(path);
    if (::connect(probe.get(), asSocketAddress(address), sizeof address) == 0 || errno == EAGAIN) {
        refuse(path, "another program listens there: stop it or choose another path");
    }
    if (errno == ENOENT) {
        return;
    }
    if (errno != ECONNREFUSED) {
        refuseBySystem(path, "the socket that is there already cannot be tried");
    }
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
        refuseBySystem(path, "the socket left behind there cannot be removed");
    }
    backendLog()->info("removed the socket {}, left behind by a back end that is gone", path);
}

}  // namespace

ListeningSocket::ListeningSocket(const std::string& path) : path_(path), socket_(newSocket(path))
{
    const auto lock = lockDirectory(path_);
    bindTo();
    try {
        remember();
    } catch (const StartupError&) {
        ::unlink(path_.c_str());
        throw;
    }
}

void ListeningSocket::bindTo()
{
    const auto address = unixAddress(path_);
    if (!address) {
        refuse(path_, unixAddressRefusal(path_));
    }
    clearTheWay(path_, *address);
    // Set before the file exists, so that it is never open to others; `remember` undoes what the
    // umask took.
    if (::fchmod(socket_.get(), kMode) != 0) {
        refuseBySystem(path_, "its mode cannot be set");
    }
    if (::bind(socket_.get(), asSocketAddress(*address), sizeof *address) != 0) {
        refuseBySystem(path_, "the socket cannot be made");
    }
}

void ListeningSocket::remember()
{
    struct stat own {};
    if (::chmod(path_.c_str(), kMode) != 0 || ::lstat(path_.c_str(), &own) != 0) {
        refuseBySystem(path_, "its mode cannot be set");
    }
    device_ = own.st_dev;
    inode_ = own.st_ino;
    if (::listen(socket_.get(), kBacklog) != 0) {
        refuseBySystem(path_, "the system does not let it listen");
    }
}

ListeningSocket::~ListeningSocket()
{
    struct stat found {};
    if (::lstat(path_.c_str(), &found) != 0 || found.st_dev != device_ || found.st_ino != inode_) {
        return;
    }
    if (::unlink(path_.c_str()) != 0) {
        const int error = errno;
        backendLog()->warn("cannot remove the socket {}: {}", path_, std::strerror(error));
    }
}

}  // namespace talvik::backend
