#pragma once

#include "trap/trap_dest_info.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/// What the reference host accepts in a trap destination. `SnmpUtil` offers these checks to the
/// module; the trap store applies them to whatever reaches it. The address has a header of its own,
/// destination_address.h.
namespace talvik::trap_rules {

constexpr std::uint32_t kMaxIndex = 2147483647;  ///< of the MIB's Integer32
constexpr std::size_t kMaxUserOctets = 32;       ///< of a user name, RFC 3414

/// The number that `text` names: decimal from 1 to kMaxIndex, without sign, blank or leading zero.
std::optional<std::uint32_t> parseIndex(const std::string& text);

/// 1 to 65535.
bool isPort(unsigned int port);

/// 1, 2, 3: SNMPv1, SNMPv2c, SNMPv3.
bool isVersion(unsigned int version);

/// 1, 2, 3 or 7.
bool isType(unsigned int type);

/// 1 to 32 octets of UTF-8 (RFC 3629) without control characters (U+0000 to U+001F, U+007F to
/// U+009F). "--", which stands for none, is one.
bool isUser(const std::string& user);

/// Which field besides the index keeps `destination` out of the list: its name and value, safe for
/// a log line. Empty if all are acceptable.
std::string objection(const tTrapDestInfo& destination);

}  // namespace talvik::trap_rules
