#pragma once

#include "framework/snmp_handler.h"

/// Base of the handlers of MIB tables. Leaf operations are refused with `CKEL_Exception`; changes
/// that a table does not override return -1 and touch nothing.
class CSnmpTableHandler : public CSnmpHandler {
public:
    int OnQueryLeaf(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                    CTLVPackageV3<TLVMsgHeadV3>& rsp) override;
    int OnSetLeaf(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                  CTLVPackageV3<TLVMsgHeadV3>& rsp) override;
    int OnCreateTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                      CTLVPackageV3<TLVMsgHeadV3>& rsp) override;
    int OnModifyTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                      CTLVPackageV3<TLVMsgHeadV3>& rsp) override;
    int OnDeleteTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                      CTLVPackageV3<TLVMsgHeadV3>& rsp) override;
};
