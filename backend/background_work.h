#pragma once

#include <chrono>

namespace talvik::backend {

/// What a server's thread does besides answering its clients.
class BackgroundWork {
public:
    using Time = std::chrono::steady_clock::time_point;

    virtual ~BackgroundWork() = default;

    /// Becomes readable, whatever thread made it so, when `proceed` is to be called and subscribed
    /// clients may have something to take.
    virtual int wakeFd() const = 0;

    /// When `proceed` is to be called at the latest; `Time::max()` for never.
    virtual Time deadline() const = 0;

    /// Does what is due and makes `wakeFd` unreadable. Takes no longer than a command does.
    virtual void proceed(Time now) = 0;

protected:
    BackgroundWork() = default;
    BackgroundWork(const BackgroundWork&) = default;
    BackgroundWork& operator=(const BackgroundWork&) = default;
};

}  // namespace talvik::backend
