#include "platform/memcpy_s.h"

#include <cerrno>
#include <cstring>

extern "C" int memcpy_s(void* dest, std::size_t destSize, const void* src, std::size_t count)
{
    if (dest == nullptr || (src == nullptr && count != 0)) {
        return EINVAL;
    }
    if (count > destSize) {
        return ERANGE;
    }
    if (count != 0) {
        std::memcpy(dest, src, count);
    }
    return 0;
}
