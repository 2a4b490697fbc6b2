#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace talvik {

/// Bounds how many lines somebody outside can make the log grow by: 20 at once, and one more for
/// each second that passes. What is beyond that is counted. Used by one thread.
class LineBudget {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    explicit LineBudget(Clock clock = &std::chrono::steady_clock::now);

    /// Asks for one line. When it may be written: how many lines were left out since the last that
    /// was. When not: nothing, and this one counts as left out.
    std::optional<std::uint64_t> take();

    /// Lines left out since the last that was written.
    std::uint64_t leftOut() const { return leftOut_; }

private:
    void refill();

    Clock clock_;
    unsigned left_;
    std::chrono::steady_clock::time_point filledAt_;
    std::uint64_t leftOut_ = 0;
};

}  // namespace talvik
