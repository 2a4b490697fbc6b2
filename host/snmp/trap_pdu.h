#pragma once

#include "host/snmp/net_snmp.h"
#include "host/snmp/trap_content.h"

#include <array>
#include <memory>

namespace talvik {

struct PduRelease {
    void operator()(netsnmp_pdu* pdu) const { snmp_free_pdu(pdu); }
};

using PduPtr = std::unique_ptr<netsnmp_pdu, PduRelease>;

/// A trap or inform (`command`) of SNMP version 2c or 3: sysUpTime.0, snmpTrapOID.0, then the
/// bindings. Throws `std::bad_alloc`.
PduPtr makeTrapPdu(int command, long version, const TrapContent& content);

/// The same as a trap of version 1 (RFC 3584, 3.2). Bindings of type Counter64, which version 1
/// does not have, are left out. Null when the notification's OID is too short for an enterprise.
PduPtr makeV1TrapPdu(const TrapContent& content, const std::array<unsigned char, 4>& agentAddress);

}  // namespace talvik
