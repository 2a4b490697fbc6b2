#pragma once

#include "host/snmp/request_context.h"
#include "host/snmp/row_change.h"
#include "host/snmp/set_part.h"
#include "host/snmp/table_source.h"

#include <vector>

namespace talvik {

/// The part of one SET request that falls on one table: one change of one row.
class SetTransaction : public SetPart {
public:
    SetTransaction(TableSource& source, CKEL_SnmpContext context,
                   std::vector<WrittenVariable> variables);

    SetOutcome check() override;
    SetOutcome prepare() override;
    SetOutcome act() override;
    SetOutcome undo() override;

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
