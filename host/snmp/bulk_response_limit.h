#pragma once

namespace talvik {

/// Makes GETBULK answers fit the largest message that manager and agent allow, by leaving out
/// variables at the end, as RFC 3416 wants it. net-snmp 5.9.3 tries to, but cuts far more than it
/// must for v2c, and for v3 answers genErr or writes past the end of a buffer (any user who may
/// read can make it do so).
///
/// The library has no hook for this. This unit therefore defines the function that the library's
/// agent builds a GETBULK answer with, `_build_initial_pdu_packet`, itself and in front of the
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

}  // namespace talvik
