#pragma once

#include <string>

/// Conversion between unsigned numbers and decimal text. Callable from any thread.
class KelUtility {
public:
    /// The number that `text` starts with, in decimal; 0 when it starts with no digit, the largest
    /// when it is beyond 32 bits.
    static unsigned int StrToUint(std::string text);

    /// `value` as decimal text.
    static std::string UintToStr(unsigned int value);
};
