#pragma once

#include "host/snmp/object_id.h"

#include <string>

/// The context of one SNMP request: what the host knows of who asks and how. Lives for one handler
/// call. The module treats it as opaque.
class CKEL_SnmpContext {
public:
    enum class Operation { Get, GetNext, GetBulk, Set };

    Operation operation = Operation::Get;
    int pduType =
        0;  ///< the BER tag of the request PDU: 160 GetRequest, 161 GetNext, 163 Set, 165 GetBulk
    long version = 0;  ///< as on the wire: 0 for v1, 1 for v2c, 3 for v3
    std::string user;  ///< the v3 user, or the community; secret for v1 and v2c, so not for the log
    std::string contextName;  ///< v3 only
    std::string source;       ///< who asks, as text: "UDP: [127.0.0.1]:40000->[127.0.0.1]:1161"
    /// What a query of a table in batches looks for, relative to the MIB's root.
    talvik::ObjectId oid;
};
