#pragma once

#include "host/snmp/net_snmp.h"
#include "host/snmp/object_id.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace talvik::bench {

/// One variable of a SET: column and value.
struct Assignment {
    unsigned long column;
    unsigned char type;  ///< ASN_INTEGER, ASN_UNSIGNED or ASN_OCTET_STR
    long number;
    std::string octets;
};

/// One row of a SET.
struct RowAssignment {
    unsigned long index;
    std::vector<Assignment> columns;
};

/// A manager with one v2c session, as lean as net-snmp's client library allows.
class SnmpManager {
public:
    /// Opens a session with the agent on the loopback's `port`.
    SnmpManager(unsigned port, const std::string& community);
    ~SnmpManager();

    SnmpManager(const SnmpManager&) = delete;
    SnmpManager& operator=(const SnmpManager&) = delete;

    /// Whether anything at all answers, within a tenth of a second.
    bool answers() const;

    /// Sets columns of rows of the table at `entry`, a request each, with up to `window` of them on
    /// their way at a time: one for a manager that waits, several for one that provisions. Returns
    /// when all are answered; throws `std::runtime_error` with the agent's reason when one is
    /// refused.
    void setAll(const ObjectId& entry, const std::vector<RowAssignment>& rows,
                std::size_t window) const;

    /// Walks what lies under `root` and returns the number of variables: with GETNEXT when
    /// `repetitions` is 0, with GETBULK otherwise.
    std::size_t walk(const ObjectId& root, long repetitions) const;

    /// As before, and calls `see` with each of them.
    std::size_t walk(const ObjectId& root, long repetitions,
                     const std::function<void(const netsnmp_variable_list&)>& see) const;

private:
    void* session_;
};

}  // namespace talvik::bench
