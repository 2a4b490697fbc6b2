#include "fuzz/properties/alarm_catalogue_property.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    talvik::fuzz::checkAlarmCatalogue(data, size);
    return 0;
}
