#include "tests/contract/vtable.h"

#include "framework/kel_exception.h"
#include "framework/notify_msg_handler.h"
#include "framework/snmp_leaf_handler.h"
#include "framework/snmp_table_handler.h"
#include "framework/tlv_package.h"
#include "handlers/snmp_topo_handler.h"
#include "module/talvik_mib_module.h"
#include "notify/talvik_oid_based_msg_handler.h"
#include "platform/snmp_table_base.h"
#include "platform/svc_module.h"
#include "trap/talvik_trap_addr_handler.h"

#include <gtest/gtest.h>

#include <ostream>

// Slots 0 and 1 are the two destructors wherever a class has a virtual one. A host that was
// compiled elsewhere calls by slot, so every number here is a promise.

namespace {

using talvik::contract::slotOf;
using Package = CTLVPackageV3<TLVMsgHeadV3>;

struct Slot {
    const char* name;
    std::size_t expected;
    std::size_t (*actual)();

    friend std::ostream& operator<<(std::ostream& os, const Slot& row) { return os << row.name; }
};

class SlotOrder : public testing::TestWithParam<Slot> {};

TEST_P(SlotOrder, IsWhatHostsCallBy)
{
    EXPECT_EQ(GetParam().actual(), GetParam().expected);
}

std::string nameOf(const testing::TestParamInfo<Slot>& row)
{
    return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    SvcModule, SlotOrder,
    testing::Values(Slot{"getMibFileName", 2, slotOf<&CSNMP_Svc_Module::getMibFileName>},
                    Slot{"getSvcHandler", 3, slotOf<&CSNMP_Svc_Module::getSvcHandler>}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    TalvikMibModule, SlotOrder,
    testing::Values(Slot{"getMibFileName", 2, slotOf<&CSNMP_Talvik_Mib_Module::getMibFileName>},
                    Slot{"getSvcHandler", 3, slotOf<&CSNMP_Talvik_Mib_Module::getSvcHandler>}),
    nameOf);

/// The slots that every handler's table begins with.
template <typename Handler>
auto handlerSlots()
{
    return testing::Values(Slot{"OnQueryLeaf", 2, slotOf<&Handler::OnQueryLeaf>},
                           Slot{"OnQueryTable", 3, slotOf<&Handler::OnQueryTable>},
                           Slot{"OnSetLeaf", 4, slotOf<&Handler::OnSetLeaf>},
                           Slot{"OnCreateTable", 5, slotOf<&Handler::OnCreateTable>},
                           Slot{"OnModifyTable", 6, slotOf<&Handler::OnModifyTable>},
                           Slot{"OnDeleteTable", 7, slotOf<&Handler::OnDeleteTable>},
                           Slot{"strategy", 8, slotOf<&Handler::strategy>},
                           Slot{"isWholeTable", 9, slotOf<&Handler::isWholeTable>},
                           Slot{"getSnmpOIDVersion", 10, slotOf<&Handler::getSnmpOIDVersion>});
}

INSTANTIATE_TEST_SUITE_P(SnmpHandler, SlotOrder, handlerSlots<CSnmpHandler>(), nameOf);
INSTANTIATE_TEST_SUITE_P(SnmpTableHandler, SlotOrder, handlerSlots<CSnmpTableHandler>(), nameOf);
INSTANTIATE_TEST_SUITE_P(SnmpLeafHandler, SlotOrder, handlerSlots<CSnmpLeafHandler>(), nameOf);
INSTANTIATE_TEST_SUITE_P(SnmpTopoHandler, SlotOrder, handlerSlots<CSnmpTopoHandler>(), nameOf);
INSTANTIATE_TEST_SUITE_P(TalvikTrapAddrHandler, SlotOrder, handlerSlots<CTalvikTrapAddrHandler>(),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(SnmpTableBase, SlotOrder, handlerSlots<CSnmpTableBase>(), nameOf);

INSTANTIATE_TEST_SUITE_P(SnmpLeafHandlerOwn, SlotOrder,
                         testing::Values(Slot{"queryLeaf", 11,
                                              slotOf<&CSnmpLeafHandler::queryLeaf>}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(
    SnmpTableBaseOwn, SlotOrder,
    testing::Values(
        Slot{"preGetRspCell", 11, slotOf<&CSnmpTableBase::preGetRspCell>},
        Slot{"postGetRspCell", 12, slotOf<&CSnmpTableBase::postGetRspCell>},
        Slot{"GetTableInfo", 13, slotOf<&CSnmpTableBase::GetTableInfo>},
        Slot{"GetBatchTableInfo", 14, slotOf<&CSnmpTableBase::GetBatchTableInfo>},
        Slot{"GetBatchTableInfo_i", 15, slotOf<&CSnmpTableBase::GetBatchTableInfo_i>},
        Slot{"fillReqRecord", 16, slotOf<&CSnmpTableBase::fillReqRecord>},
        Slot{"fillRspRecord", 17, slotOf<&CSnmpTableBase::fillRspRecord>},
        Slot{"getIndexOfRecord", 18, slotOf<&CSnmpTableBase::getIndexOfRecord>},
        Slot{"getMibKey", 19, slotOf<&CSnmpTableBase::getMibKey>},
        Slot{"queryRecordValidation", 20, slotOf<&CSnmpTableBase::queryRecordValidation>},
        Slot{"checkOKBeforeQueryTable", 21, slotOf<&CSnmpTableBase::checkOKBeforeQueryTable>},
        Slot{"SendBatchPackage", 22, slotOf<&CSnmpTableBase::SendBatchPackage>},
        Slot{"GetNextRspInfo", 23, slotOf<&CSnmpTableBase::GetNextRspInfo>}),
    nameOf);

/// The slots of every notification handler's table.
template <typename Handler>
auto notifySlots()
{
    return testing::Values(Slot{"constructAlarmTrapVb", 2, slotOf<&Handler::constructAlarmTrapVb>},
                           Slot{"getTrapOid", 3, slotOf<&Handler::getTrapOid>},
                           Slot{"getBaseOid", 4, slotOf<&Handler::getBaseOid>},
                           Slot{"useDateAndTime", 5, slotOf<&Handler::useDateAndTime>},
                           Slot{"getTrapVbLen", 6, slotOf<&Handler::getTrapVbLen>},
                           Slot{"filterTrapMap", 7, slotOf<&Handler::filterTrapMap>});
}

INSTANTIATE_TEST_SUITE_P(NotifyMsgHandler, SlotOrder, notifySlots<INotifyMsgHandler>(), nameOf);
INSTANTIATE_TEST_SUITE_P(TalvikNotifyMsgHandler, SlotOrder, notifySlots<CTalvikNotifyMsgHandler>(),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(TalvikOIDBasedMsgHandler, SlotOrder,
                         notifySlots<CTalvikOIDBasedMsgHandler>(), nameOf);

INSTANTIATE_TEST_SUITE_P(
    TlvPackage, SlotOrder,
    testing::Values(
        Slot{"decode", 2, slotOf<&Package::decode>},
        Slot{"encodeIntoNewBuffer", 3,
             slotOf<static_cast<u_int (Package::*)(unsigned char*&)>(&Package::encode)>},
        Slot{"encodeIntoBuffer", 4,
             slotOf<
                 static_cast<u_int (Package::*)(unsigned char*, unsigned int)>(&Package::encode)>},
        Slot{"clear", 5, slotOf<&Package::clear>}, Slot{"dump", 6, slotOf<&Package::dump>}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(KelException, SlotOrder,
                         testing::Values(Slot{"what", 2, slotOf<&CKEL_Exception::what>}), nameOf);

}  // namespace
