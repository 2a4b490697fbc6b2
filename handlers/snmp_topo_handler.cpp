#include "handlers/snmp_topo_handler.h"

#include "framework/debug_kit_guard.h"
#include "framework/local_address.h"
#include "framework/log_codes.h"
#include "framework/result_codes.h"
#include "handlers/snmp_topo_tags.h"
#include "platform/basic_info.h"
#include "platform/configuration_channel.h"
#include "platform/device_config.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;

constexpr std::int32_t kLocalNode = 1;
constexpr std::int32_t kOnline = 1;
constexpr std::int32_t kOffline = 2;

// Contract: literals, not the device's settings; deployed managers show them as they are.
constexpr const char* kAddress = "192.168.2.10";
constexpr const char* kNodeName = "Array";
constexpr const char* kBlank = " ";

/// The number of the command that reads the system WWN; 0 when it is not configured or no number.
std::uint64_t wwnCommand()
{
    std::string value;
    CKELXmlConfig::instance()->getDeviceItem("COMMAND", "GET_SYSTEM_WWN", value);
    return static_cast<std::uint64_t>(std::strtoll(value.c_str(), nullptr, 10));
}

void appendTo(Package& package, std::unique_ptr<CTLVRecordV3> record)
{
    package.oRecords.push_back(record.get());
    record.release();
}

/// Whether the back end answers; the answer's content does not matter.
std::int32_t nodeStatus()
{
    Package command;
    Package answer;
    appendTo(command, std::make_unique<CTLVRecordV3>(wwnCommand()));
    const int result = CSNMP_Configuration::instance()->configure(command, answer, false, false);
    return result == talvik::result_code::kSuccess ? kOnline : kOffline;
}

void appendCell(CTLVRecordV3& row, std::unique_ptr<CTLVCell> cell)
{
    row.append(cell.get());
    cell.release();
}

void appendText(CTLVRecordV3& row, unsigned short tag, const char* text)
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set(tag, text);
    appendCell(row, std::move(cell));
}

void appendNumber(CTLVRecordV3& row, CTLVCell::ETLVType type, unsigned short tag, const void* value)
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set_i(type, tag, value, sizeof(std::uint32_t));
    appendCell(row, std::move(cell));
}

}  // namespace

// Contract: the request's cells are not looked at; hosts' table engines pick what they want from
// the whole table.
int CSnmpTopoHandler::OnQueryTable(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                   CTLVPackageV3<TLVMsgHeadV3>& rsp)
{
    const CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    const std::int32_t status = nodeStatus();
    const std::uint32_t nodeType = CSNMPBasicImpl::getNodeType();

    auto row = std::make_unique<CTLVRecordV3>();
    appendText(*row, talvik::topo_tag::kNodeCode, CSNMPBasicImpl::getNodeCode());
    appendNumber(*row, CTLVCell::TLV_UINT, talvik::topo_tag::kNodeType, &nodeType);
    appendNumber(*row, CTLVCell::TLV_INT, talvik::topo_tag::kNodeIndex, &kLocalNode);
    appendText(*row, talvik::topo_tag::kAddress, kAddress);
    appendText(*row, talvik::topo_tag::kNodeName, kNodeName);
    appendText(*row, talvik::topo_tag::kReserved1, kBlank);
    appendText(*row, talvik::topo_tag::kReserved2, kBlank);
    appendNumber(*row, CTLVCell::TLV_INT, talvik::topo_tag::kStatus, &status);
    appendTo(rsp, std::move(row));
    return talvik::result_code::kSuccess;
}
