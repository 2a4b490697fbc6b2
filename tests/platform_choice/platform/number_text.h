#pragma once

#include <string>

// A vendor who has the bodies in the header, and more operations than the module calls.
class KelUtility {
public:
    static unsigned int StrToUint(std::string text)
    {
        unsigned int number = 0;
        for (const char digit : text) {
            if (digit < '0' || digit > '9') {
                break;
            }
            number = number * 10 + static_cast<unsigned int>(digit - '0');
        }
        return number;
    }

    static std::string UintToStr(unsigned int value) { return std::to_string(value); }
    static std::string UlongToStr(unsigned long value);
};
