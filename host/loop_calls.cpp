#include "host/loop_calls.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <future>
#include <system_error>
#include <utility>

namespace talvik {

struct LoopCalls::Call {
    explicit Call(std::function<void()> work) : task(std::move(work)) {}

    std::packaged_task<void()> task;
    std::future<void> end = task.get_future();
};

LoopCalls::LoopCalls() : signal_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!signal_) {
        throw std::system_error(errno, std::generic_category(), "no descriptor for calls");
    }
}

LoopCalls::~LoopCalls()
{
    close();
}

bool LoopCalls::run(std::function<void()> work, std::chrono::milliseconds limit)
{
    const auto call = std::make_shared<Call>(std::move(work));
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (closed_) {
            return false;
        }
        waiting_.push_back(call);
    }
    ::eventfd_write(signal_.get(), 1);
    if (call->end.wait_for(limit) != std::future_status::ready) {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto place = std::find(waiting_.begin(), waiting_.end(), call);
        if (place != waiting_.end()) {
            waiting_.erase(place);
            return false;
        }
    }
    try {
        call->end.get();  // it runs, or has run
    } catch (const std::future_error&) {
        return false;  // closed before it began
    }
    return true;
}

void LoopCalls::close()
{
    std::deque<std::shared_ptr<Call>> refused;
    const std::lock_guard<std::mutex> lock(mutex_);
    closed_ = true;
    refused.swap(waiting_);
    for (const auto& call : refused) {
        call->task = {};  // whoever waits learns that it will not be run
    }
}

std::shared_ptr<LoopCalls::Call> LoopCalls::next()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (waiting_.empty()) {
        return nullptr;
    }
    auto call = std::move(waiting_.front());
    waiting_.pop_front();
    return call;
}

void LoopCalls::proceed(bool /*ready*/, Time /*now*/)
{
    eventfd_t count = 0;
    ::eventfd_read(signal_.get(), &count);
    while (const auto call = next()) {
        call->task();
    }
}

}  // namespace talvik
