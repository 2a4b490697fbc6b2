#include "host/stop_signals.h"

#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace talvik {

StopSignals::StopSignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    descriptor_ = signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
    if (descriptor_ < 0) {
        throw std::system_error(errno, std::generic_category(), "signalfd");
    }
}

StopSignals::~StopSignals()
{
    close(descriptor_);
}

int StopSignals::take() const
{
    signalfd_siginfo info{};
    const auto count = read(descriptor_, &info, sizeof(info));
    return count == static_cast<ssize_t>(sizeof(info)) ? static_cast<int>(info.ssi_signo) : 0;
}

}  // namespace talvik
