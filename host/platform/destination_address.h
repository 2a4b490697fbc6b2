#pragma once

#include <string>

namespace talvik {

/// What the address of a trap destination can be.
enum class DestinationKind {
    None,  ///< no acceptable address
    Ipv4,  ///< a dotted quad of decimal numbers without leading zeros
    Ipv6,  ///< in a text form of RFC 4291, with a zone ("fe80::1%eth0") if it is link-local
    Name,  ///< a host name of RFC 1123
};

/// The kind of `address`, which is taken as it stands: no blanks around it, no port, no brackets.
///
/// None for the unspecified addresses, 0.0.0.0 (as ::ffff:0.0.0.0 too) and ::. They are never a
/// destination (RFC 1122, 3.2.1.3), and a table shows 0.0.0.0 in place of a name that does not
/// resolve: a manager that writes back what it read must not replace the name with it.
///
/// A name is at most 253 octets of labels and dots, and may end in one dot more. A label is 1 to 63
/// letters, digits and hyphens, with no hyphen at its ends. The last label is not all digits, so
/// that a mistyped address is no name.
///
/// A zone is 1 to 15 visible ASCII characters other than '/', which is what Linux takes as the name
/// of an interface, or an interface's number (RFC 4007).
DestinationKind destinationKind(const std::string& address);

}  // namespace talvik
