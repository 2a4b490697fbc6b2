#pragma once

#include "host/snmp/instance_name.h"
#include "host/snmp/mib_description.h"
#include "host/snmp/net_snmp.h"

#include <cstddef>
#include <vector>

namespace talvik {

/// What one manager may see of a table's columns (RFC 3415), for whoever answers a GETBULK without
/// net-snmp's own check. A column that lies in the view, or outside of it, as a whole is looked up
/// once. Lives for one request.
class ColumnViews {
public:
    explicit ColumnViews(const MibTable& table) : table_(table), views_(table.columns.size()) {}

    /// False if nothing of the column at position `column` is in the view.
    bool showsSome(netsnmp_pdu& pdu, std::size_t column);

    /// Whether the instance `name` of that column is in the view.
    bool shows(netsnmp_pdu& pdu, std::size_t column, const InstanceName& name);

private:
    enum class View { NotLookedUp, All, Some, None };

    View viewOf(netsnmp_pdu& pdu, std::size_t column);

    const MibTable& table_;
    std::vector<View> views_;
};

}  // namespace talvik
