#pragma once

#include "host/snmp/net_snmp.h"

#include <cstddef>

namespace talvik {

/// Makes GETBULK answers fit the largest message that manager and agent allow, by leaving out
/// variables at the end, as RFC 3416 wants it. net-snmp 5.9.3 tries to, but cuts far more than it
/// must for v2c, and for v3 answers genErr or writes past the end of a buffer (any user who may
/// read can make it do so). Any answer that cannot be sent at all becomes tooBig without variables,
/// where the library copies them back or sends nothing.
///
/// The library has no hook for this. This unit therefore defines the function that the library's
/// agent builds messages with, `_build_initial_pdu_packet`, itself and in front of the
/// original, which it calls. Calling this function makes sure that the unit is part of the program,
/// and throws `StartupError` when the library has no such original or would call another than this
/// one.
void limitBulkResponses();

/// Octets that a variable of these sizes takes at most in a message: `nameOctets` and `valueOctets`
/// of content.
constexpr unsigned long encodedSizeOf(unsigned long nameOctets, unsigned long valueOctets)
{
    constexpr unsigned long kHeader = 4;  // tag and length of at most 65535
    return kHeader + kHeader + nameOctets + kHeader + valueOctets;
}

/// Octets that the answer to the GETBULK `pdu` may have: what the manager takes, what is
/// configured, and otherwise what one Ethernet frame carries, or for a manager on this machine one
/// datagram.
unsigned long largestBulkResponse(const netsnmp_pdu& pdu);

/// Octets of a text that a table may show: one that no answer can carry would end every walk.
std::size_t largestShownText();

/// How much of an answer to a GETBULK has been put together, so that nobody looks for variables
/// that will be left out.
class BulkRoom {
public:
    explicit BulkRoom(const netsnmp_pdu& pdu);

    /// Whether another variable may still fit.
    bool hasSome() const { return used_ < limit_; }

    /// The answer gets `variable`. Returns false if neither this one nor any later one fits.
    bool take(const netsnmp_variable_list& variable);

private:
    unsigned long limit_;
    unsigned long used_;
};

}  // namespace talvik
