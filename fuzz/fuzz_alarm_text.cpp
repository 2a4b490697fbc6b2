#include "fuzz/properties/alarm_text_property.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    talvik::fuzz::checkAlarmText(data, size);
    return 0;
}
