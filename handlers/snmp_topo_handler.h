#pragma once

#include "framework/snmp_table_handler.h"

/// The topology table, 1.3.6.1.4.1.99999.2.91.9.1: always one row, the local node. Its status
/// column tells whether the management back end answers. The order of the virtual operations is
/// binary contract.
class CSnmpTopoHandler : public CSnmpTableHandler {
public:
    /// Asks the back end for the system WWN and appends the one row to `rsp`, whatever the request
    /// names. Returns 0 also when the back end does not answer: that only turns the status column
    /// to 2.
    int OnQueryTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                     CTLVPackageV3<TLVMsgHeadV3>& rsp) override;
};
