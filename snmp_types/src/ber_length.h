#pragma once

#include <cstddef>
#include <cstdint>

namespace Snmp_pp {

/// Octets of a whole BER element with one tag octet, a definite length and `contents` octets.
int berElementLength(std::size_t contents);

/// Octets of the shortest two's complement contents.
std::size_t berSignedLength(std::int64_t number);
std::size_t berUnsignedLength(std::uint64_t number);

/// Octets of one sub-identifier, seven bits each.
std::size_t berArcLength(std::uint64_t arc);

}  // namespace Snmp_pp
