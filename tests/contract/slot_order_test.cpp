#include "tests/contract/vtable.h"

#include "framework/kel_exception.h"
#include "framework/notify_msg_handler.h"
#include "framework/snmp_leaf_handler.h"
#include "framework/snmp_table_handler.h"
#include "framework/tlv_package.h"
#include "handlers/snmp_talvik_kel_alarm_handler.h"
#include "handlers/snmp_talvik_kel_clear_alarm_handler.h"
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
INSTANTIATE_TEST_SUITE_P(TalvikKelAlarmHandler, SlotOrder,
                         handlerSlots<CSnmpTalvikKelAlarmHandler>(), nameOf);
INSTANTIATE_TEST_SUITE_P(TalvikKelClearAlarmHandler, SlotOrder,
                         handlerSlots<CSnmpTalvikKelClearAlarmHandler>(), nameOf);

/// The slot that a leaf handler's table ends with.
template <typename Handler>
auto leafSlots()
{
    return testing::Values(Slot{"queryLeaf", 11, slotOf<&Handler::queryLeaf>});
}

INSTANTIATE_TEST_SUITE_P(SnmpLeafHandlerOwn, SlotOrder, leafSlots<CSnmpLeafHandler>(), nameOf);
INSTANTIATE_TEST_SUITE_P(TalvikKelClearAlarmHandlerOwn, SlotOrder,
                         leafSlots<CSnmpTalvikKelClearAlarmHandler>(), nameOf);

/// The slots that the table engine adds.
template <typename Handler>
auto batchedSlots()
{
    return testing::Values(
        Slot{"preGetRspCell", 11, slotOf<&Handler::preGetRspCell>},
        Slot{"postGetRspCell", 12, slotOf<&Handler::postGetRspCell>},
        Slot{"GetTableInfo", 13, slotOf<&Handler::GetTableInfo>},
        Slot{"GetBatchTableInfo", 14, slotOf<&Handler::GetBatchTableInfo>},
        Slot{"GetBatchTableInfo_i", 15, slotOf<&Handler::GetBatchTableInfo_i>},
        Slot{"fillReqRecord", 16, slotOf<&Handler::fillReqRecord>},
        Slot{"fillRspRecord", 17, slotOf<&Handler::fillRspRecord>},
        Slot{"getIndexOfRecord", 18, slotOf<&Handler::getIndexOfRecord>},
        Slot{"getMibKey", 19, slotOf<&Handler::getMibKey>},
        Slot{"queryRecordValidation", 20, slotOf<&Handler::queryRecordValidation>},
        Slot{"checkOKBeforeQueryTable", 21, slotOf<&Handler::checkOKBeforeQueryTable>},
        Slot{"SendBatchPackage", 22, slotOf<&Handler::SendBatchPackage>},
        Slot{"GetNextRspInfo", 23, slotOf<&Handler::GetNextRspInfo>});
}

INSTANTIATE_TEST_SUITE_P(SnmpTableBaseOwn, SlotOrder, batchedSlots<CSnmpTableBase>(), nameOf);
INSTANTIATE_TEST_SUITE_P(TalvikKelAlarmHandlerBatched, SlotOrder,
                         batchedSlots<CSnmpTalvikKelAlarmHandler>(), nameOf);
INSTANTIATE_TEST_SUITE_P(TalvikKelAlarmHandlerOwn, SlotOrder,
                         testing::Values(Slot{"useDateAndTime", 24,
                                              slotOf<&CSnmpTalvikKelAlarmHandler::useDateAndTime>}),
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
