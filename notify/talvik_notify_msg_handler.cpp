#include "notify/talvik_notify_msg_handler.h"

#include "alarmconfig/alarm_config_parser.h"
#include "framework/debug_kit_guard.h"
#include "framework/kel_exception.h"
#include "framework/local_address.h"
#include "framework/log_codes.h"
#include "framework/result_codes.h"
#include "framework/tlv_record.h"
#include "notify/alarm_record_tags.h"
#include "notify/alarm_repository.h"
#include "notify/alarm_trap_bindings.h"
#include "platform/time_conversion.h"
#include "trap/trap_dest_info.h"

#include <agent_pp/snmp_pp_ext.h>
#include <snmp_pp/snmp_pp.h>

namespace {

namespace category_of = talvik::alarm_category;
namespace code = talvik::log_code;
namespace result = talvik::result_code;
namespace tag = talvik::alarm_tag;

/// What a trap says of its alarm.
struct Alarm {
    unsigned long long id = 0;
    unsigned int id32 = 0;
    unsigned int level = 0;
    unsigned int category = 0;
    unsigned int serial = 0;
    unsigned long long time = 0;
    std::string location;
    std::string detail;
    std::string name;
    std::string suggestion;
};

/// `Number` is `unsigned int` or `unsigned long long`; a wider value is cut.
template <typename Number>
Number numberIn(const CTLVRecordV3& record, unsigned short cellTag)
{
    const CTLVCell* const cell = record[cellTag];
    cell->checkNumerical();
    return CTLVCell::ValueCast<Number>()(cell);
}

std::string textIn(const CTLVRecordV3& record, unsigned short cellTag)
{
    const CTLVCell* const cell = record[cellTag];
    cell->checkString();
    return cell->toString();
}

unsigned long long timeOf(const CTLVRecordV3& record, unsigned int category)
{
    // Contract: tag 4 is read also where it is not used, and tag 5 beside tag 6; back ends send all
    // three with every clear.
    const auto occurredAt = numberIn<unsigned long long>(record, tag::kOccurredAt);
    if (category != category_of::kClear) {
        return occurredAt;
    }
    const auto preferred = numberIn<unsigned long long>(record, tag::kClearedAtPreferred);
    const auto first = numberIn<unsigned long long>(record, tag::kClearedAtFirst);
    return preferred != 0 ? preferred : first;
}

/// Reads the alarm that `record` reports: 0, or the catalogue's result after a line about it.
/// Throws `CKEL_Exception` for a missing cell or one of the wrong kind; the order of reading
/// decides which one is named.
int readAlarm(CTalvikNotifyMsgHandler& handler, const CTLVRecordV3& record,
              CAlarmConfigParser& parser, CKELDebugKitGuard& guard, Alarm& alarm)
{
    alarm.id = numberIn<unsigned long long>(record, tag::kAlarmId);
    const std::string parameters = textIn(record, tag::kParameters);
    const int status = parser.getAlarmInfo(alarm.id, parameters, alarm.location, alarm.detail,
                                           alarm.id32, alarm.name, alarm.suggestion);
    if (status != result::kSuccess) {
        guard.error(code::kNotification, "constructAlarmTrapVb", __LINE__,
                    "parse alarm %llu failed", alarm.id);
        return status;
    }
    const auto level = static_cast<int>(numberIn<unsigned int>(record, tag::kLevel));
    alarm.level = static_cast<unsigned int>(CAlarmConfigParser::converToQ7400AlarmLevel(level));
    handler.getAlarmCategory(record, alarm.category);
    alarm.serial = numberIn<unsigned int>(record, tag::kSerialNo);
    alarm.time = timeOf(record, alarm.category);
    return result::kSuccess;
}

}  // namespace

int CTalvikNotifyMsgHandler::constructAlarmTrapVb(const CTLVRecordV3& record, Agentpp::Vbx*& vbs)
{
    static const std::string signature = __PRETTY_FUNCTION__;  // made once: this runs a trap
    CKELDebugKitGuard guard(talvik::kLogModule, signature);
    CAlarmConfigParser& parser = *CAlarmConfigParser::instance();
    Alarm alarm;
    try {
        const int status = readAlarm(*this, record, parser, guard, alarm);
        if (status != result::kSuccess) {
            return status;
        }
    } catch (const CKEL_Exception& error) {
        guard.error(code::kNotification, "constructAlarmTrapVb", __LINE__,
                    "handle notify failed, %s", error.what());
        return result::kFailed;
    }

    Snmp_pp::OctetStr time;
    Snmp_pp::OctetStr timeText;
    time2DateTime(timeText, time, alarm.time);
    Snmp_pp::Oid base(getBaseOid());

    // Contract: the caller's from here on, also when filling it fails; hosts free what is set.
    vbs = new Agentpp::Vbx[talvik::kBindingCount];
    const char* summary[talvik::kBindingCount] = {};
    fileAlarmTrapVbNodecode(vbs, summary, base, alarm.location, alarm.suggestion);
    fileAlarmTrapVbTitle(vbs, summary, base, alarm.name, alarm.level);
    fileAlarmTrapVbAlarmId(vbs, summary, base, alarm.id32);
    fileAlarmTrapVbTime(vbs, summary, base, time, timeText);
    fileAlarmTrapVbAddition(vbs, summary, base, alarm.serial, alarm.detail);
    fileAlarmTrapVbAlarmCate(vbs, summary, base, alarm.category, alarm.id);
    dump_alarm_info(summary);
    return result::kSuccess;
}

Agentpp::Oidx& CTalvikNotifyMsgHandler::getTrapOid(unsigned long long, unsigned short)
{
    static Agentpp::Oidx oid("1.3.6.1.4.1.99999.2.91.10.2.1.0.1");
    return oid;
}

Agentpp::Oidx& CTalvikNotifyMsgHandler::getBaseOid()
{
    static Agentpp::Oidx oid("1.3.6.1.4.1.99999.2.91.10.3.1.1");
    return oid;
}

int CTalvikNotifyMsgHandler::getTrapVbLen()
{
    return static_cast<int>(talvik::kBindingCount);
}

void CTalvikNotifyMsgHandler::filterTrapMap(const std::map<std::string, tTrapDestInfo>& all,
                                            std::list<tTrapDestInfo>& chosen)
{
    for (const auto& [key, destination] : all) {
        if (destination.type == 1 || destination.type == 3) {
            chosen.push_back(destination);
        }
    }
}

// Contract: 32 bits here, 64 where the same cells are read as times; back ends may send a clear
// time of which the low half is 0, and it does not make a clear.
void CTalvikNotifyMsgHandler::getAlarmCategory(const CTLVRecordV3& record, unsigned int& category)
{
    if (numberIn<unsigned int>(record, tag::kClearedAtPreferred) != 0 ||
        numberIn<unsigned int>(record, tag::kClearedAtFirst) != 0) {
        category = category_of::kClear;
        return;
    }
    // Contract: the event flag counts in this one kind of record; back ends use its tag otherwise
    // in the rest.
    const bool isEvent = record.ullRecordId == talvik::kRecordWithEventFlag &&
                         numberIn<unsigned int>(record, tag::kEventFlag) == talvik::kIsEvent;
    category = isEvent ? category_of::kEvent : category_of::kFault;
}

void CTalvikNotifyMsgHandler::time2DateTime(Snmp_pp::OctetStr& text, Snmp_pp::OctetStr& value,
                                            unsigned long long time)
{
    const auto seconds = static_cast<long>(time);
    CSnmpUtil::convertTime2DateTimeStr(text, seconds);
    if (useDateAndTime()) {
        CSnmpUtil::convertTime2DateTime(value, seconds);
    } else {
        value = text;
    }
}

int CTalvikNotifyMsgHandler::putAlarmIntoRepository(u_int serial, u_int category)
{
    static const std::string signature = __PRETTY_FUNCTION__;
    CKELDebugKitGuard guard(talvik::kLogModule, signature);
    auto* const repository = CAlarmRepository_Singleton::getAlarmRepository();
    if (repository == nullptr) {
        guard.error(code::kRepository, "putAlarmIntoRepository", __LINE__, "null repository ptr");
        return result::kFailed;
    }
    if (category == category_of::kEvent) {
        return result::kSuccess;
    }
    return updateRepository(category, serial, repository);
}

int CTalvikNotifyMsgHandler::updateRepository(u_int category, u_int serial,
                                              CAlarmRepository_Singleton* repository)
{
    constexpr const char* label = "updateRepository";
    static const std::string signature = __PRETTY_FUNCTION__;
    CKELDebugKitGuard guard(talvik::kLogModule, signature);
    if (category == category_of::kFault) {
        const int added = repository->addAlarm(serial);
        if (added != result::kSuccess) {
            guard.error(code::kHandler, label, __LINE__,
                        "add alarm with serial num %u into repository failed, errcode=%d", serial,
                        added);
        }
        return added;
    }
    const int deleted = repository->deleteAlarm(serial);
    if (deleted != result::kSuccess) {
        guard.error(code::kHandler, label, __LINE__,
                    "delete clear type alarm %u failed, errcode=%d", serial, deleted);
    }
    return deleted;
}
