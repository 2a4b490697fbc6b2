#pragma once

#include "framework/snmp_leaf_handler.h"

/// The clear-alarm leaf, 1.3.6.1.4.1.99999.2.91.10.1.2: a manager clears an active alarm by setting
/// it to the alarm's serial number. The order of the virtual operations is binary contract.
class CSnmpTalvikKelClearAlarmHandler : public CSnmpLeafHandler {
public:
    /// Has the back end clear the alarm that tag 0 of record 0 names. Returns the back end's
    /// result, and its answer in `rsp`. A request without a record, and a cell that is missing or
    /// no number, fail with `CKEL_Exception`; nothing is sent then.
    int OnSetLeaf(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                  CTLVPackageV3<TLVMsgHeadV3>& rsp) override;

    /// Always 0.
    int queryLeaf(const CKEL_SnmpContext& ctx, CTLVCell*& pCell) override;
};
