#include "host/link/acknowledgements.h"

#include <deque>
#include <utility>

namespace talvik {

struct Acknowledgements::State {
    std::uint32_t first = 1;  // the number of the first entry of `open`
    std::deque<bool> open;    // true for a notification that is not settled
    std::uint32_t taken = 0;  // the number that was taken last
};

class Acknowledgements::Settled {
public:
    Settled(std::weak_ptr<State> state, std::uint32_t number)
        : state_(std::move(state)),
          number_(number)
    {
    }

    ~Settled()
    {
        const auto state = state_.lock();
        if (!state) {
            return;
        }
        state->open[number_ - state->first] = false;
        while (!state->open.empty() && !state->open.front()) {
            state->open.pop_front();
            ++state->first;
        }
    }

    Settled(const Settled&) = delete;
    Settled& operator=(const Settled&) = delete;

private:
    const std::weak_ptr<State> state_;
    const std::uint32_t number_;
};

Acknowledgements::Acknowledgements() : state_(std::make_shared<State>()) {}

std::uint32_t Acknowledgements::next() const
{
    return state_->first + static_cast<std::uint32_t>(state_->open.size());
}

std::shared_ptr<void> Acknowledgements::expect()
{
    const auto number = next();
    state_->open.push_back(true);
    try {
        return std::make_shared<Settled>(state_, number);
    } catch (...) {
        state_->open.pop_back();
        throw;
    }
}

bool Acknowledgements::due() const
{
    return state_->first - 1 != state_->taken;
}

std::optional<std::uint32_t> Acknowledgements::take()
{
    if (!due()) {
        return std::nullopt;
    }
    state_->taken = state_->first - 1;
    return state_->taken;
}

}  // namespace talvik
