#pragma once

#include "host/snmp/failure_log.h"
#include "host/snmp/mib_description.h"
#include "host/snmp/table_snapshot.h"

#include <memory>

class CKEL_SnmpContext;
class CSnmpHandler;

namespace talvik {

/// A table with the handler that knows its rows. This is the boundary to the module: whatever a
/// handler does or throws ends here as "no answer" and a log line. Used by the agent's thread only.
class TableSource {
public:
    /// Throws `StartupError` when the handler cannot be driven. The table must outlive this object.
    TableSource(const MibTable& table, std::unique_ptr<CSnmpHandler> handler);
    ~TableSource();

    TableSource(const TableSource&) = delete;
    TableSource& operator=(const TableSource&) = delete;

    /// Asks the handler for the whole table; null when it failed.
    std::shared_ptr<const TableSnapshot> query(const CKEL_SnmpContext& context);

    const MibTable& table() const { return table_; }

private:
    const MibTable& table_;
    std::unique_ptr<CSnmpHandler> handler_;
    FailureLog failures_;
};

}  // namespace talvik
