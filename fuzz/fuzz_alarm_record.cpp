#include "fuzz/properties/alarm_record_property.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    talvik::fuzz::checkAlarmRecord(data, size);
    return 0;
}
