#pragma once

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <utility>

namespace talvik::test {

/// A thread of which a test wants to know whether it has to wait for a lock. Joined at the end of
/// the scope.
class ObservedThread {
public:
    ObservedThread() = default;
    ObservedThread(const ObservedThread&) = delete;
    ObservedThread& operator=(const ObservedThread&) = delete;

    ~ObservedThread() { join(); }

    template <typename Action>
    void start(Action action)
    {
        thread_ = std::thread([this, action = std::move(action)] {
            id_ = ::gettid();
            action();
            done_ = true;
        });
    }

    /// True once the thread sleeps, which it does for a lock only; false when its action ends
    /// without that, or nothing of it happens for long.
    bool hasToWait() const
    {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!done_ && std::chrono::steady_clock::now() < limit) {
            if (isAsleep()) {
                return true;
            }
            std::this_thread::yield();
        }
        return false;
    }

    /// False when the action takes very long.
    bool ends() const
    {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!done_ && std::chrono::steady_clock::now() < limit) {
            std::this_thread::yield();
        }
        return done_;
    }

    void join()
    {
        if (thread_.joinable()) {
            thread_.join();
        }
    }

private:
    bool isAsleep() const
    {
        if (id_ == 0) {
            return false;
        }
        std::ifstream file("/proc/self/task/" + std::to_string(id_) + "/stat");
        std::string line;
        std::getline(file, line);
        const auto name = line.rfind(") ");  // the state follows the name in brackets
        return name != std::string::npos && line.compare(name + 2, 1, "S") == 0;
    }

    std::atomic<int> id_{0};  // the kernel's, 0 until the thread runs
    std::atomic<bool> done_{false};
    std::thread thread_;
};

}  // namespace talvik::test
