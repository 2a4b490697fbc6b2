#include "framework/snmp_table_handler.h"

#include "framework/kel_exception.h"
#include "framework/result_codes.h"

int CSnmpTableHandler::OnQueryLeaf(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                   CTLVPackageV3<TLVMsgHeadV3>&)
{
    throw CKEL_Exception("CSnmpTableHandler can't support leaf OnQueryLeaf!");
}

int CSnmpTableHandler::OnSetLeaf(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                 CTLVPackageV3<TLVMsgHeadV3>&)
{
    throw CKEL_Exception("CSnmpTableHandler can't support leaf OnSetLeaf!");
}

int CSnmpTableHandler::OnCreateTable(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                     CTLVPackageV3<TLVMsgHeadV3>&)
{
    return talvik::result_code::kFailed;
}

int CSnmpTableHandler::OnModifyTable(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                     CTLVPackageV3<TLVMsgHeadV3>&)
{
    return talvik::result_code::kFailed;
}

int CSnmpTableHandler::OnDeleteTable(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                     CTLVPackageV3<TLVMsgHeadV3>&)
{
    return talvik::result_code::kFailed;
}
