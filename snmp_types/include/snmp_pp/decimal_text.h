#pragma once

#include <charconv>
#include <iterator>
#include <limits>

namespace Snmp_pp {

/// A number as decimal text, made with the number and not when first asked for: that takes less
/// than the allocation of a text for which several threads may ask at once.
template <typename Number>
class DecimalText {
public:
    explicit DecimalText(Number number)
    {
        *std::to_chars(std::begin(text_), std::end(text_) - 1, number).ptr = '\0';
    }

    const char* get() const { return text_; }

private:
    char text_[std::numeric_limits<Number>::digits10 + 3];  // a sign, the first digit, NUL
};

}  // namespace Snmp_pp
