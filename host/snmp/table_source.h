#pragma once

#include "host/snmp/failure_log.h"
#include "host/snmp/handler_boundary.h"
#include "host/snmp/mib_description.h"
#include "host/snmp/table_snapshot.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class CKEL_SnmpContext;
class CSnmpHandler;

namespace talvik {

/// A table with the handler that knows its rows. This is the boundary to the module: whatever a
/// handler does or throws ends here as "no answer" and a log line. Used by the agent's thread only.
class TableSource {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// Throws `StartupError` when the handler cannot be driven. The table must outlive this object.
    TableSource(const MibTable& table, std::unique_ptr<CSnmpHandler> handler,
                Clock clock = &std::chrono::steady_clock::now);
    ~TableSource();

    TableSource(const TableSource&) = delete;
    TableSource& operator=(const TableSource&) = delete;

    /// The whole table: the handler's answer, or its last one while the table's `answerLifetime`
    /// lasts and nothing was changed through this object. Null when the handler failed. Who asks
    /// makes no difference.
    std::shared_ptr<const TableSnapshot> query(const CKEL_SnmpContext& context);

    /// As `query`, but always asks the handler.
    std::shared_ptr<const TableSnapshot> queryAnew(const CKEL_SnmpContext& context);

    /// Change one row of a table with a RowStatus; one call of the handler each. A modify replaces
    /// the whole row.
    HandlerAnswer createRow(const CKEL_SnmpContext& context, std::uint32_t row,
                            const std::vector<ColumnValue>& values);
    HandlerAnswer modifyRow(const CKEL_SnmpContext& context, std::uint32_t row,
                            const std::vector<ColumnValue>& values);
    HandlerAnswer deleteRow(const CKEL_SnmpContext& context, std::uint32_t row);

    const MibTable& table() const { return table_; }

private:
    using Package = CTLVPackageV3<TLVMsgHeadV3>;
    using Operation = int (CSnmpHandler::*)(const CKEL_SnmpContext&, const Package&, Package&);

    HandlerAnswer change(Operation operation, const CKEL_SnmpContext& context,
                         std::uint32_t headerWord, const std::vector<ColumnValue>& values);
    ColumnValue indexValue(std::uint32_t row) const;

    const MibTable& table_;
    std::unique_ptr<CSnmpHandler> handler_;
    FailureLog failures_;
    Clock clock_;
    std::shared_ptr<const TableSnapshot> kept_;  ///< the last good answer, unless dropped
    std::chrono::steady_clock::time_point keptUntil_;
};

}  // namespace talvik
