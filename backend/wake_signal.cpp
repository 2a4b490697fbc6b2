#include "backend/wake_signal.h"

#include "host/startup_error.h"

#include <sys/eventfd.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace talvik::backend {

WakeSignal::WakeSignal() : fd_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!fd_) {
        const int error = errno;
        throw StartupError(std::string("cannot make a descriptor to wake the back end: ") +
                           std::strerror(error));
    }
}

void WakeSignal::raise() const noexcept
{
    // It fails when the counter is full, which is readable already.
    static_cast<void>(::eventfd_write(fd_.get(), 1));
}

void WakeSignal::clear() const noexcept
{
    eventfd_t count = 0;
    static_cast<void>(::eventfd_read(fd_.get(), &count));  // fails when it is unreadable already
}

}  // namespace talvik::backend
