#include "fuzz/properties/decode_property.h"
#include "fuzz/quiet_log.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    talvik::fuzz::silenceCodecLog();
    talvik::fuzz::checkDecode(data, size);
    return 0;
}
