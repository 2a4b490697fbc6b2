#include "host/state_directory.h"

#include "host/snmp/durable_file.h"
#include "host/startup_error.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace talvik {

StateDirectory::StateDirectory(const std::string& path)
{
    makePrivateDirectory(path);
    const auto lockFile = path + "/lock";
    lock_ = open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (lock_ < 0) {
        throw StartupError("cannot open " + lockFile + ": " + std::strerror(errno));
    }
    if (flock(lock_, LOCK_EX | LOCK_NB) != 0) {
        const auto reason = errno;
        close(lock_);
        throw StartupError("the state directory " + path +
                           (reason == EWOULDBLOCK
                                ? std::string(" is in use by another agent: end it, or "
                                              "give this one another --state-dir")
                                : std::string(" cannot be locked: ") + std::strerror(reason)));
    }
}

StateDirectory::~StateDirectory()
{
    close(lock_);
}

}  // namespace talvik
