#pragma once

#include "host/snmp/request_context.h"
#include "host/snmp/row_change.h"
#include "host/snmp/table_source.h"

#include <vector>

namespace talvik {

/// The part of one SET request that falls on one table, step by step as net-snmp's agent library
/// takes all parts of a request: `check` and `prepare`, then `act`, then `undo` if another part
/// failed. All of the part takes effect or nothing.
class SetTransaction {
public:
    SetTransaction(TableSource& source, CKEL_SnmpContext context,
                   std::vector<WrittenVariable> variables);

    /// Checks each variable by itself.
    SetOutcome check();

    /// Checks that the variables make one change of one row that is possible as the table is now.
    SetOutcome prepare();

    /// Makes the change; the handler is called once. Logs it, or why it failed.
    SetOutcome act();

    /// Takes the change back if it was made. Logs what was taken back, or that it failed.
    SetOutcome undo();

private:
    HandlerAnswer apply() const;
    HandlerAnswer revert() const;
    std::string describe(const std::string& what) const;

    TableSource& source_;
    CKEL_SnmpContext context_;
    std::vector<WrittenVariable> variables_;
    std::vector<ColumnWrite> writes_;
    RowChange change_;
    std::vector<ColumnValue> former_;  ///< what the row held, for a modify or a delete
    bool done_ = false;
};

}  // namespace talvik
