#pragma once

#include "framework/tlv_package.h"
#include "host/snmp/mib_description.h"
#include "host/snmp/snmp_value.h"

#include <functional>
#include <string>
#include <vector>

namespace talvik {

/// What SNMP shows of one table at one moment: its instances in MIB order. Unchanged once it is
/// made, so that every variable of one request sees the same rows.
class TableSnapshot {
public:
    /// An instance: its OID relative to the table's (1.column.index) and its value.
    struct Instance {
        ObjectId suffix;
        SnmpValue value;
    };

    /// Told of each row or cell that is left out: a short text that is the same for the same kind
    /// of fault.
    using ProblemSink = std::function<void(const std::string& problem)>;

    /// The instances of a handler's `rows`. A row without a usable index or with the index of a row
    /// before it is left out, and so is a cell that is missing or does not fit its column.
    TableSnapshot(const MibTable& table, const CTLVPackageV3<TLVMsgHeadV3>& rows,
                  const ProblemSink& problem);

    /// The instance at exactly `suffix`, or null.
    const Instance* at(const ObjectId& suffix) const;

    /// The first instance behind `suffix` (at or behind it if `inclusive`), or null past the end.
    const Instance* after(const ObjectId& suffix, bool inclusive) const;

    const std::vector<Instance>& instances() const { return instances_; }

private:
    std::vector<Instance> instances_;
};

}  // namespace talvik
