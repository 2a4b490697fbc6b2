#pragma once

#include <cstdint>
#include <memory>
#include <optional>

namespace talvik {

/// Which notifications of one connection are settled. They are numbered 1, 2, 3 ... as they come,
/// may be settled in any order, and an acknowledgement covers its number and all before it. Used by
/// one thread.
class Acknowledgements {
public:
    Acknowledgements();

    /// The number of the next notification.
    std::uint32_t next() const;

    /// Takes the next notification into account. It is settled when the last copy of the result is
    /// gone; a copy may outlive this object and does nothing then.
    std::shared_ptr<void> expect();

    /// True if `take` has something.
    bool due() const;

    /// The highest number that may be acknowledged now; nothing when it was taken before.
    std::optional<std::uint32_t> take();

private:
    class Settled;
    struct State;

    std::shared_ptr<State> state_;
};

}  // namespace talvik
