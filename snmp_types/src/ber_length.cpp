#include "ber_length.h"

namespace Snmp_pp {

int berElementLength(std::size_t contents)
{
    constexpr std::size_t kLongestShortForm = 127;
    std::size_t length = 1;
    if (contents > kLongestShortForm) {
        for (std::size_t rest = contents; rest != 0; rest >>= 8) {
            ++length;
        }
    }
    return static_cast<int>(1 + length + contents);
}

std::size_t berSignedLength(std::int64_t number)
{
    std::size_t length = 1;
    for (; number < -128 || number > 127; number >>= 8) {
        ++length;
    }
    return length;
}

std::size_t berUnsignedLength(std::uint64_t number)
{
    // A set top bit would read as a sign, hence one octet more.
    std::size_t length = 1;
    for (; number > 127; number >>= 8) {
        ++length;
    }
    return length;
}

std::size_t berArcLength(std::uint64_t arc)
{
    std::size_t length = 1;
    for (; arc > 127; arc >>= 7) {
        ++length;
    }
    return length;
}

}  // namespace Snmp_pp
