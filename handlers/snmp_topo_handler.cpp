#include "handlers/snmp_topo_handler.h"

#include "framework/debug_kit_guard.h"
#include "framework/local_address.h"
#include "framework/log_codes.h"
#include "framework/result_codes.h"
#include "handlers/command_number.h"
#include "handlers/record_cells.h"
#include "handlers/snmp_topo_tags.h"
#include "platform/basic_info.h"
#include "platform/configuration_channel.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;

constexpr std::int32_t kLocalNode = 1;
constexpr std::int32_t kOnline = 1;
constexpr std::int32_t kOffline = 2;

// Contract: literals, not the device's settings; deployed managers show them as they are.
constexpr const char* kAddress = "192.168.2.10";
constexpr const char* kNodeName = "Array";
constexpr const char* kBlank = " ";

/// Whether the back end answers; the answer's content does not matter.
std::int32_t nodeStatus()
{
    Package command;
    Package answer;
    const auto number = static_cast<std::uint64_t>(talvik::commandNumber("GET_SYSTEM_WWN"));
    talvik::appendRecord(command, std::make_unique<CTLVRecordV3>(number));
    const int result = CSNMP_Configuration::instance()->configure(command, answer, false, false);
    return result == talvik::result_code::kSuccess ? kOnline : kOffline;
}

}  // namespace

// Contract: the request's cells are not looked at; hosts' table engines pick what they want from
// the whole table.
int CSnmpTopoHandler::OnQueryTable(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                   CTLVPackageV3<TLVMsgHeadV3>& rsp)
{
    const CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    const std::int32_t status = nodeStatus();
    const unsigned int nodeType = CSNMPBasicImpl::getNodeType();

    auto row = std::make_unique<CTLVRecordV3>();
    talvik::CellWriter cells(*row);
    cells.text(talvik::topo_tag::kNodeCode, CSNMPBasicImpl::getNodeCode());
    cells.unsignedNumber(talvik::topo_tag::kNodeType, nodeType);
    cells.signedNumber(talvik::topo_tag::kNodeIndex, kLocalNode);
    cells.text(talvik::topo_tag::kAddress, kAddress);
    cells.text(talvik::topo_tag::kNodeName, kNodeName);
    cells.text(talvik::topo_tag::kReserved1, kBlank);
    cells.text(talvik::topo_tag::kReserved2, kBlank);
    cells.signedNumber(talvik::topo_tag::kStatus, status);
    talvik::appendRecord(rsp, std::move(row));
    return talvik::result_code::kSuccess;
}
