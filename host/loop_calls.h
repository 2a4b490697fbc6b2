#pragma once

#include "backend/file_descriptor.h"
#include "host/loop_watcher.h"

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace talvik {

/// Lets other threads run something on the thread of the agent's loop, which alone may use the SNMP
/// library.
class LoopCalls : public LoopWatcher {
public:
    /// Throws `std::system_error`.
    LoopCalls();

    /// Refuses the calls that still wait.
    ~LoopCalls() override;

    /// Has `work` run by the loop and waits for its end. False when the loop did not begin with it
    /// within `limit`; it is then never run. What `work` throws comes out here. Not from the loop's
    /// own thread.
    bool run(std::function<void()> work, std::chrono::milliseconds limit);

    /// From now on every call is refused at once; those that wait, too. Call it when the loop ends.
    void close();

    int descriptor() const override { return signal_.get(); }
    Time deadline() const override { return Time::max(); }
    void proceed(bool ready, Time now) override;

private:
    struct Call;

    std::shared_ptr<Call> next();

    backend::FileDescriptor signal_;
    std::mutex mutex_;
    std::deque<std::shared_ptr<Call>> waiting_;  // under mutex_
    bool closed_ = false;                        // under mutex_
};

}  // namespace talvik
