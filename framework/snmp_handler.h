#pragma once

#include "framework/tlv_package.h"
#include "platform/snmp_context.h"

/// What the host calls for a request on one registered subtree. The order of the virtual operations
/// is binary contract: every handler's table begins with these.
///
/// Each `On...` operation takes the request's context, the request package and the response package
/// that it appends its answer to. It returns 0 for success; the host turns any other result, or a
/// `CKEL_Exception`, into an SNMP error. The host calls a handler for one request at a time, and
/// owns it.
class CSnmpHandler {
public:
    virtual ~CSnmpHandler() = default;

    virtual int OnQueryLeaf(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                            CTLVPackageV3<TLVMsgHeadV3>& rsp) = 0;
    virtual int OnQueryTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                             CTLVPackageV3<TLVMsgHeadV3>& rsp) = 0;
    virtual int OnSetLeaf(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                          CTLVPackageV3<TLVMsgHeadV3>& rsp) = 0;
    virtual int OnCreateTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                              CTLVPackageV3<TLVMsgHeadV3>& rsp) = 0;
    virtual int OnModifyTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                              CTLVPackageV3<TLVMsgHeadV3>& rsp) = 0;
    virtual int OnDeleteTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                              CTLVPackageV3<TLVMsgHeadV3>& rsp) = 0;

    /// The handler's query strategy; 0 means none.
    virtual unsigned long long strategy() { return 0; }

    /// True if one `OnQueryTable` answers the whole table, false if the table is driven in batches
    /// from a key.
    virtual bool isWholeTable() { return true; }

    /// Version of the OID layout that the handler serves.
    virtual int getSnmpOIDVersion() { return 1; }

protected:
    CSnmpHandler() = default;
    CSnmpHandler(const CSnmpHandler&) = default;
    CSnmpHandler& operator=(const CSnmpHandler&) = default;
};
