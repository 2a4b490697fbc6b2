#pragma once

#include "framework/snmp_handler.h"

/// Base of the handlers of scalars. Table operations are refused with `CKEL_Exception`; a concrete
/// handler supplies `OnSetLeaf` and `queryLeaf`.
class CSnmpLeafHandler : public CSnmpHandler {
public:
    /// Answers with one record (identifier all ones) that holds the cell of `queryLeaf` under tag
    /// 0. Returns -1, with the response untouched and the cell freed, when `queryLeaf` fails or
    /// makes no cell. The request is not read.
    int OnQueryLeaf(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                    CTLVPackageV3<TLVMsgHeadV3>& rsp) override;
    int OnQueryTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                     CTLVPackageV3<TLVMsgHeadV3>& rsp) override;
    int OnCreateTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                      CTLVPackageV3<TLVMsgHeadV3>& rsp) override;
    int OnModifyTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                      CTLVPackageV3<TLVMsgHeadV3>& rsp) override;
    int OnDeleteTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                      CTLVPackageV3<TLVMsgHeadV3>& rsp) override;

    /// Reads the scalar: stores a newly allocated cell in `pCell`, which the caller owns, and
    /// returns 0. A cell stored before a failure (another result, or an exception) is the caller's
    /// too.
    virtual int queryLeaf(const CKEL_SnmpContext& ctx, CTLVCell*& pCell) = 0;
};
