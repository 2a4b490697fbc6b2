#pragma once

#include "framework/snmp_table_handler.h"

struct tTrapDestInfo;

/// The trap destination table, 1.3.6.1.4.1.99999.2.91.10.4.1. The list itself is the host's, behind
/// `CSNMP_TrapApi`. The order of the virtual operations is binary contract. Nothing here keeps
/// state; the host serialises changes of the list. A cell of the wrong kind, or a create or modify
/// without a port, fails with `CKEL_Exception`.
class CTalvikTrapAddrHandler : public CSnmpTableHandler {
public:
    /// Appends one record a destination to `rsp`, in the host's order, whatever the request names.
    /// Returns 0, or -1 when the host cannot read its list.
    int OnQueryTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                     CTLVPackageV3<TLVMsgHeadV3>& rsp) override;

    /// Each changes the one destination that record 0 of `req` describes and leaves `rsp` as it is.
    /// They return the host's result, or 0x3000003 when the request is refused before the host is
    /// asked. A modify replaces the whole row: a column that the request leaves out takes the value
    /// that it has in a create. A delete goes by address and port before it goes by index; it
    /// returns -1 when the host cannot read its list.
    int OnCreateTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                      CTLVPackageV3<TLVMsgHeadV3>& rsp) override;
    int OnModifyTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                      CTLVPackageV3<TLVMsgHeadV3>& rsp) override;
    int OnDeleteTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                      CTLVPackageV3<TLVMsgHeadV3>& rsp) override;

    /// Whether a create or modify may go on: its version and type, where it has them, are
    /// acceptable, and it names an address (tag 6's is looked at only when tag 1 is missing).
    bool CheckParam(const CTLVPackageV3<TLVMsgHeadV3>& req);

    /// Takes version, address (tag 6), type and user of the request over into `info`, each only if
    /// the host accepts it; an unacceptable one leaves the field as it was, without a message.
    void CommonOperation(const CTLVPackageV3<TLVMsgHeadV3>& req, tTrapDestInfo& info);

    /// Appends the eight cells of the row of `info` to `record`. When it throws, the cells appended
    /// before are the record's.
    void makeIntTrapPackage(const tTrapDestInfo& info, CTLVRecordV3& record);
};
