#include "fuzz/properties/trap_table_property.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    talvik::fuzz::checkTrapTable(data, size);
    return 0;
}
