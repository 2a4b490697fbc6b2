#pragma once

#include "host/snmp/net_snmp.h"
#include "host/snmp/trap_content.h"

#include <array>
#include <memory>
#include <vector>

namespace talvik {

struct PduRelease {
    void operator()(netsnmp_pdu* pdu) const { snmp_free_pdu(pdu); }
};

using PduPtr = std::unique_ptr<netsnmp_pdu, PduRelease>;

/// For a PDU whose variables are not its own.
struct BorrowingPduRelease {
    void operator()(netsnmp_pdu* pdu) const
    {
        pdu->variables = nullptr;
        snmp_free_pdu(pdu);
    }
};

using BorrowingPduPtr = std::unique_ptr<netsnmp_pdu, BorrowingPduRelease>;

/// Room for the variables of one PDU after the other. The library's own variables take over a
/// kilobyte each, which it clears and frees for every message.
using VariableRoom = std::vector<netsnmp_variable_list>;

/// A trap or inform (`command`) of SNMP version 2c or 3: sysUpTime.0, snmpTrapOID.0, then the
/// bindings. Throws `std::bad_alloc`, as those below do.
PduPtr makeTrapPdu(int command, long version, const TrapContent& content);

/// The same as a trap that borrows names and texts from `content` and has its variables in `room`.
BorrowingPduPtr borrowTrapPdu(long version, const TrapContent& content, VariableRoom& room);

/// The same as a trap of version 1 (RFC 3584, 3.2). Bindings of type Counter64, which version 1
/// does not have, are left out. Null when the notification's OID is too short for an enterprise.
BorrowingPduPtr borrowV1TrapPdu(const TrapContent& content,
                                const std::array<unsigned char, 4>& agentAddress,
                                VariableRoom& room);

}  // namespace talvik
