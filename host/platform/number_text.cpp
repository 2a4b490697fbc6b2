#include "platform/number_text.h"

#include <charconv>
#include <limits>

unsigned int KelUtility::StrToUint(std::string text)
{
    unsigned int number = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    return end.ec == std::errc::result_out_of_range ? std::numeric_limits<unsigned int>::max()
                                                    : number;
}

std::string KelUtility::UintToStr(unsigned int value)
{
    return std::to_string(value);
}
