#include "backend/server_thread.h"

#include "backend/backend_log.h"
#include "host/startup_error.h"

#include <pthread.h>

#include <csignal>
#include <exception>
#include <system_error>

namespace talvik::backend {

namespace {

/// Blocks all signals of the calling thread, and so of the threads that it makes, while this lives.
class BlockedSignals {
public:
    BlockedSignals()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }

    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t before_{};
};

}  // namespace

ServerThread::ServerThread(const CommandServer& commands, const std::string& path,
                           BackgroundWork* work, const ServerLimits& limits)
    : path_(path),
      server_(commands, path, limits, work)
{
    const BlockedSignals blocked;
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error& error) {
        throw StartupError("cannot serve unix:" + path + ": no thread: " + error.what());
    }
}

ServerThread::~ServerThread()
{
    stop_.raise();
    thread_.join();
}

void ServerThread::run() noexcept
{
    try {
        server_.run(stop_.fd());
    } catch (const std::exception& error) {
        backendLog()->error("commands are no longer served at unix:{}: {}; restart this program",
                            path_, error.what());
    }
}

}  // namespace talvik::backend
