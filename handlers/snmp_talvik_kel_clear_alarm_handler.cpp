#include "handlers/snmp_talvik_kel_clear_alarm_handler.h"

#include "framework/debug_kit_guard.h"
#include "framework/log_codes.h"
#include "framework/result_codes.h"
#include "handlers/command_number.h"
#include "handlers/record_cells.h"
#include "handlers/snmp_talvik_kel_clear_alarm_tags.h"
#include "platform/configuration_channel.h"

#include <cstdint>
#include <memory>

namespace {

namespace tag = talvik::clear_alarm_tag;

constexpr const char* kRequester = "SNMP_AGENT";

std::unique_ptr<CTLVRecordV3> clearCommand(long long number, std::uint32_t serial)
{
    auto record = std::make_unique<CTLVRecordV3>(static_cast<std::uint64_t>(number));
    talvik::CellWriter cells(*record);
    cells.unsignedNumber(tag::kSerialNo, serial);
    cells.text(tag::kRequester, kRequester);
    return record;
}

}  // namespace

int CSnmpTalvikKelClearAlarmHandler::OnSetLeaf(const CKEL_SnmpContext&,
                                               const CTLVPackageV3<TLVMsgHeadV3>& req,
                                               CTLVPackageV3<TLVMsgHeadV3>& rsp)
{
    CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    // Contract: read at every set, unlike the table's; hosts may change their configuration.
    const auto number = talvik::commandNumber("CLEAR_ALARM");
    // Contract: nothing is validated, not even that the alarm is there; the back end's result tells
    // managers.
    const auto serial = talvik::numberIn<unsigned int>(*req[0], tag::kRequestedSerialNo);

    CTLVPackageV3<TLVMsgHeadV3> command;
    // Contract: this word of the header alone goes on; back ends read it.
    command.oHead.uiWord3 = req.oHead.uiWord3;
    talvik::appendRecord(command, clearCommand(number, serial));
    const int result = CSNMP_Configuration::instance()->configure(command, rsp, false, false);
    // Contract: a warning after every clear, a successful one too; hosts keep their record of
    // clears by it.
    guard.warn(talvik::log_code::kHandler, "OnSetLeaf", __LINE__,
               "clear alarm of serial number:%u, ret:%d.", serial, result);
    return result;
}

// Contract: 0, whatever was set; the leaf is a command, and deployed managers read it so.
int CSnmpTalvikKelClearAlarmHandler::queryLeaf(const CKEL_SnmpContext&, CTLVCell*& pCell)
{
    constexpr std::uint32_t value = 0;
    auto cell = std::make_unique<CTLVCell>();
    cell->set_i(CTLVCell::TLV_UINT, tag::kRequestedSerialNo, &value, sizeof value);
    pCell = cell.release();
    return talvik::result_code::kSuccess;
}
