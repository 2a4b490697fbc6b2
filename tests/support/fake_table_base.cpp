// The bodies of the table engine that a host supplies. The tests call only those that are compiled
// into the module, so these say so when one is reached.

#include "platform/snmp_table_base.h"

#include "tests/support/fake_host.h"

#include <stdexcept>

namespace {

[[noreturn]] void unexpected(const char* call)
{
    throw std::logic_error(std::string("the fake host has no ") + call);
}

}  // namespace

const std::string CSnmpTableBase::INVALID_KEY = "no key";

int CSnmpTableBase::OnQueryTable(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                 CTLVPackageV3<TLVMsgHeadV3>&)
{
    unexpected("OnQueryTable");
}

int CSnmpTableBase::GetTableInfo(std::string, CTLVPackageV3<TLVMsgHeadV3>&)
{
    unexpected("GetTableInfo");
}

int CSnmpTableBase::GetBatchTableInfo(std::string, unsigned int, CTLVPackageV3<TLVMsgHeadV3>&)
{
    unexpected("GetBatchTableInfo");
}

int CSnmpTableBase::GetBatchTableInfo_i(CTLVPackageV3<TLVMsgHeadV3>&, std::string&, std::string&,
                                        unsigned long long&, unsigned int&, int&,
                                        CTLVPackageV3<TLVMsgHeadV3>&)
{
    unexpected("GetBatchTableInfo_i");
}

bool CSnmpTableBase::queryRecordValidation(const CTLVRecordV3&)
{
    unexpected("queryRecordValidation");
}

int CSnmpTableBase::SendBatchPackage(CTLVPackageV3<TLVMsgHeadV3>&, CTLVPackageV3<TLVMsgHeadV3>&)
{
    unexpected("SendBatchPackage");
}
