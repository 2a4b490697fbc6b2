#include "host/snmp/line_budget.h"

#include <utility>

namespace talvik {

namespace {

constexpr unsigned kLinesAtOnce = 20;
constexpr std::chrono::seconds kTimePerLine{1};

}  // namespace

LineBudget::LineBudget(Clock clock)
    : clock_(std::move(clock)),
      left_(kLinesAtOnce),
      filledAt_(clock_())
{
}

std::optional<std::uint64_t> LineBudget::take()
{
    refill();
    if (left_ == 0) {
        ++leftOut_;
        return std::nullopt;
    }
    --left_;
    return std::exchange(leftOut_, 0);
}

void LineBudget::refill()
{
    const auto now = clock_();
    const auto earned = (now - filledAt_) / kTimePerLine;
    if (earned >= kLinesAtOnce - left_) {
        left_ = kLinesAtOnce;
        filledAt_ = now;
    } else {
        left_ += static_cast<unsigned>(earned);
        filledAt_ += earned * kTimePerLine;
    }
}

}  // namespace talvik
