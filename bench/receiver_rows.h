#pragma once

#include "bench/table_rows.h"
#include "host/snmp/net_snmp.h"
#include "host/snmp/object_id.h"

#include <string>

namespace talvik::bench {

/// A trap destination of the samples: the same for every agent under measurement.
struct Receiver {
    long index;
    std::string address;
    long port;
    long version;
    long type;
    std::string user;
};

inline Receiver receiver(unsigned index)
{
    return {static_cast<long>(index),
            "192.0." + std::to_string(index / 250) + "." + std::to_string(1 + index % 250),
            162,
            2,
            1,
            "--"};
}

inline ObjectId receiverTable()
{
    return {1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 4, 1};
}

/// What the agent shows of `count` receivers.
inline TableRows receiverRows(unsigned count)
{
    TableRows all{receiverTable(), ASN_INTEGER, {}};
    for (unsigned index = 1; index <= count; ++index) {
        const auto row = receiver(index);
        all.rows.push_back(
            {index,
             {TableCell::ofText(row.address), TableCell::ofNumber(ASN_GAUGE, row.port),
              TableCell::ofNumber(ASN_INTEGER, 1), TableCell::ofNumber(ASN_INTEGER, row.index),
              TableCell::ofNumber(ASN_INTEGER, row.version), TableCell::ofText(row.address),
              TableCell::ofNumber(ASN_INTEGER, row.type), TableCell::ofText(row.user)}});
    }
    return all;
}

inline ObjectId receiverEntry()
{
    auto entry = receiverTable();
    entry.push_back(1);
    return entry;
}

}  // namespace talvik::bench
