#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <utility>

namespace Snmp_pp {

/// The printable text of a value, made when first asked for and kept until the value changes.
/// Several threads may ask at once as long as none changes the value. A copy starts without text.
class PrintableCache {
public:
    PrintableCache() = default;
    PrintableCache(const PrintableCache&) noexcept {}
    PrintableCache& operator=(const PrintableCache&) noexcept
    {
        reset();
        return *this;
    }
    ~PrintableCache() { reset(); }

    /// The kept text; `make` supplies it as a `std::string` if there is none.
    template <typename Make>
    const char* get(Make&& make) const
    {
        if (const std::string* kept = text_.load(std::memory_order_acquire)) {
            return kept->c_str();
        }
        auto made = std::make_unique<const std::string>(std::forward<Make>(make)());
        const std::string* winner = nullptr;
        if (text_.compare_exchange_strong(winner, made.get(), std::memory_order_acq_rel)) {
            winner = made.release();
        }
        return winner->c_str();
    }

    /// Drops the text: the value has changed.
    void reset() noexcept
    {
        // No locked instruction: nobody may read while the value changes.
        if (const std::string* kept = text_.load(std::memory_order_acquire)) {
            text_.store(nullptr, std::memory_order_relaxed);
            delete kept;
        }
    }

private:
    mutable std::atomic<const std::string*> text_{nullptr};
};

}  // namespace Snmp_pp
