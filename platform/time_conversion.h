#pragma once

namespace Snmp_pp {
class OctetStr;
}

/// Conversion of times to what SNMP shows. Callable from any thread. A time beyond what a form can
/// say becomes the nearest one that it can.
class CSnmpUtil {
public:
    /// Writes `seconds` (since 1970-01-01 00:00 UTC) into `octets` as an SNMP DateAndTime with
    /// zone, 11 octets (RFC 2579).
    static void convertTime2DateTime(Snmp_pp::OctetStr& octets, long seconds);

    /// Writes `seconds` into `octets` as display text in the controller's time zone.
    static void convertTime2DateTimeStr(Snmp_pp::OctetStr& octets, long seconds);
};
