#include "handlers/snmp_talvik_kel_alarm_handler.h"

#include "alarmconfig/alarm_config_parser.h"
#include "framework/debug_kit_guard.h"
#include "framework/local_address.h"
#include "framework/log_codes.h"
#include "framework/result_codes.h"
#include "handlers/command_number.h"
#include "handlers/record_cells.h"
#include "handlers/snmp_talvik_kel_alarm_tags.h"
#include "platform/basic_info.h"
#include "platform/number_text.h"
#include "platform/time_conversion.h"

#include <agent_pp/snmp_pp_ext.h>
#include <snmp_pp/snmp_pp.h>

#include <cstdint>

namespace {

namespace batch_tag = talvik::alarm_batch_tag;
namespace column = talvik::alarm_row_tag;
namespace tag = talvik::current_alarm_tag;

constexpr const char* kLabel = "fillRspRecord";

// Kinds of query, by the type of their PDU; any other is a GetNext.
constexpr int kGetRequest = 160;
constexpr int kGetBulkRequest = 165;

constexpr std::uint32_t kBulkCount = 50;

constexpr unsigned kKeyPosition = 6;
constexpr unsigned kKeyedOidLength = kKeyPosition + 1;

constexpr unsigned int kClearRecord = 8;

// Contract: the same two values in every row, also where a trap would say more; deployed managers
// compare with them.
constexpr std::int32_t kFaultType = 2;
constexpr std::int32_t kFaultCategory = 1;

/// What the row of an alarm says.
struct Alarm {
    unsigned long long id = 0;
    unsigned int id32 = 0;
    unsigned int serial = 0;
    std::int32_t level = 0;
    long occurredAt = 0;
    std::string location;
    std::string detail;
    std::string name;
    std::string suggestion;
};

// Contract: these five ids are events with definitions of their own, which managers must not see as
// active alarms; by their low 32 bits alone.
bool isNoFault(unsigned int alarmId32)
{
    constexpr unsigned int first = 507010006;
    constexpr unsigned int last = 507010010;
    return alarmId32 >= first && alarmId32 <= last;
}

/// Reads the alarm that `record` holds; false when there is no row for it, after a line about a
/// clear or an event.
bool readAlarm(const CTLVRecordV3& record, CKELDebugKitGuard& guard, Alarm& alarm)
{
    alarm.serial = talvik::numberIn<unsigned int>(record, tag::kSerialNo);
    const auto kind = talvik::numberIn<unsigned int>(record, tag::kKind);
    alarm.id = talvik::numberIn<unsigned long long>(record, tag::kAlarmId);
    if (kind == kClearRecord) {
        guard.debug(talvik::log_code::kDebugLine, kLabel, __LINE__, "ignore clear type alarm %llu",
                    alarm.id);
        return false;
    }
    // Contract: parameters of any kind of cell, unlike those of a trap; back ends may send numbers.
    const std::string parameters = record[tag::kParameters]->toString();
    if (CAlarmConfigParser::instance()->getAlarmInfo(
            alarm.id, parameters, alarm.location, alarm.detail, alarm.id32, alarm.name,
            alarm.suggestion) != talvik::result_code::kSuccess) {
        return false;  // the catalogue said why
    }
    if (isNoFault(alarm.id32)) {
        guard.debug(talvik::log_code::kDebugLine, kLabel, __LINE__, "ignore non-fault alarm %llu",
                    alarm.id);
        return false;
    }
    const auto level = static_cast<int>(talvik::numberIn<unsigned int>(record, tag::kLevel));
    alarm.level = CAlarmConfigParser::converToQ7400AlarmLevel(level);
    alarm.occurredAt =
        static_cast<long>(talvik::numberIn<unsigned long long>(record, tag::kOccurredAt));
    return true;
}

Snmp_pp::OctetStr octetsOf(long time, bool dateAndTime)
{
    Snmp_pp::OctetStr octets;
    if (dateAndTime) {
        CSnmpUtil::convertTime2DateTime(octets, time);
    } else {
        CSnmpUtil::convertTime2DateTimeStr(octets, time);
    }
    return octets;
}

}  // namespace

// Contract: the command's number is read here and never again, unlike that of a clear; hosts
// install their configuration before they ask for handlers.
CSnmpTalvikKelAlarmHandler::CSnmpTalvikKelAlarmHandler()
    : commandCode(talvik::commandNumber("GET_CURRENT_ALARM"))
{
    m_iRequestKind = kGetRequest;
}

int CSnmpTalvikKelAlarmHandler::preGetRspCell(const CTLVRecordV3&)
{
    return talvik::result_code::kSuccess;
}

int CSnmpTalvikKelAlarmHandler::postGetRspCell(const CTLVRecordV3&)
{
    return talvik::result_code::kSuccess;
}

void CSnmpTalvikKelAlarmHandler::fillReqRecord(CTLVRecordV3* record)
{
    const bool fromStart = m_sCurrentKey == INVALID_KEY || m_sCurrentKey == "0";
    std::uint32_t start = fromStart ? 0 : KelUtility::StrToUint(m_sCurrentKey);
    // Contract: a Get starts one before its key, all others at it; back ends answer what comes
    // behind the start.
    if (m_iRequestKind == kGetRequest && start != 0) {
        --start;
    }
    record->ullRecordId = static_cast<std::uint64_t>(commandCode);
    talvik::CellWriter cells(*record);
    cells.unsignedNumber(batch_tag::kStart, start);
    cells.unsignedNumber(batch_tag::kCount, m_iRequestKind == kGetBulkRequest ? kBulkCount : 1);
}

void CSnmpTalvikKelAlarmHandler::fillRspRecord(const CTLVRecordV3& record, CTLVRecordV3* row)
{
    static const std::string signature = __PRETTY_FUNCTION__;  // made once: this runs for each row
    CKELDebugKitGuard guard(talvik::kLogModule, signature);
    if (record.find(tag::kNoAlarm) != record.pCells->end()) {
        return;
    }
    Alarm alarm;
    if (!readAlarm(record, guard, alarm)) {
        return;
    }
    const auto time = octetsOf(alarm.occurredAt, useDateAndTime());

    talvik::CellWriter cells(*row);
    cells.text(column::kNodeCode, CSNMPBasicImpl::getNodeCode());
    cells.text(column::kLocationInfo, alarm.location.c_str());
    cells.text(column::kRestoreAdvice, alarm.suggestion.c_str());
    cells.text(column::kFaultTitle, alarm.name.c_str());
    cells.signedNumber(column::kFaultType, kFaultType);
    cells.signedNumber(column::kFaultLevel, alarm.level);
    cells.unsignedNumber(column::kAlarmId, alarm.id32);
    // Contract: column 12 stands between 7 and 8; deployed hosts take the cells in this order.
    cells.wideNumber(column::kLocationAlmId, alarm.id);
    cells.octets(column::kFaultTime, time.data(), time.len());
    cells.unsignedNumber(column::kSerialNo, alarm.serial);
    cells.text(column::kAdditionInfo, alarm.detail.c_str());
    cells.signedNumber(column::kFaultCategory, kFaultCategory);
}

std::string CSnmpTalvikKelAlarmHandler::getIndexOfRecord(const CTLVRecordV3& record)
{
    return record[tag::kSerialNo]->toString();
}

// Contract: the length alone counts, not what stands before the key; hosts' table engines pass OIDs
// of this table only.
std::string CSnmpTalvikKelAlarmHandler::getMibKey(const Agentpp::Oidx& oid)
{
    if (oid.len() != kKeyedOidLength) {
        return INVALID_KEY;
    }
    return KelUtility::UintToStr(static_cast<unsigned int>(oid[kKeyPosition]));
}

bool CSnmpTalvikKelAlarmHandler::useDateAndTime()
{
    return true;
}
