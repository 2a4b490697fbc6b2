#pragma once

#include "host/snmp/net_snmp.h"
#include "host/snmp/object_id.h"

#include <cstddef>
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

/// A manager with one v2c session, as lean as net-snmp's client library allows.
class SnmpManager {
public:
    /// Opens a session with the agent on the loopback's `port`.
    SnmpManager(unsigned port, const std::string& community);
    ~SnmpManager();

    SnmpManager(const SnmpManager&) = delete;
    SnmpManager& operator=(const SnmpManager&) = delete;

    /// Whether anything at all answers.
    bool answers() const;

    /// Sets columns of the row `index` of the table at `entry`; throws `std::runtime_error` with
    /// the agent's reason when it is refused.
    void set(const ObjectId& entry, unsigned long index, const std::vector<Assignment>& row) const;

    /// Walks what lies under `root` and returns the number of variables: with GETNEXT when
    /// `repetitions` is 0, with GETBULK otherwise.
    std::size_t walk(const ObjectId& root, long repetitions) const;

private:
    void* session_;
};

}  // namespace talvik::bench
