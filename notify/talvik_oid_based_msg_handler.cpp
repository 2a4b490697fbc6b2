#include "notify/talvik_oid_based_msg_handler.h"

#include "alarmconfig/alarm_config_parser.h"
#include "framework/debug_kit_guard.h"
#include "framework/log_codes.h"
#include "framework/result_codes.h"
#include "trap/trap_dest_info.h"

namespace {

namespace code = talvik::log_code;

constexpr const char* kOidOfOtherAlarms = "1.3.6.1.4.1.99999.2.251.20.1.2.1";
constexpr const char* kRootOfAlarmOids = "1.3.6.1.4.1.99999.2.251.20.1.2.2";
constexpr unsigned int kDestinationType = 7;

}  // namespace

Agentpp::Oidx& CTalvikOIDBasedMsgHandler::getTrapOid(unsigned long long alarmId, unsigned short arg)
{
    constexpr const char* label = "getTrapOid";
    static const std::string signature = __PRETTY_FUNCTION__;  // made once: this runs for each trap
    CKELDebugKitGuard guard(talvik::kLogModule, signature);
    std::string alarmOid;
    if (CAlarmConfigParser::instance()->getAlarmOidInfo(alarmId, alarmOid) !=
        talvik::result_code::kSuccess) {
        guard.error(code::kNotification, label, __LINE__, "parse alarm %llu failed", alarmId);
    }
    if (alarmOid.empty()) {
        guard.warn(code::kNotification, label, __LINE__, "alarmoid null");
        m_oTrapOid = Agentpp::Oidx(kOidOfOtherAlarms);
        return m_oTrapOid;
    }
    // Contract: whatever the definition holds, "None" of one without the member too; deployed
    // definitions have several numbers here, and hosts send nothing under an invalid OID.
    const std::string oid =
        std::string(kRootOfAlarmOids) + "." + alarmOid + "." + std::to_string(arg);
    m_oTrapOid = Agentpp::Oidx(oid.c_str());
    // Contract: the low half of the id, in hexadecimal, and a blank at the end; log filters match
    // on it.
    guard.debug(code::kDebugLine, label, __LINE__, "alarmid = %x;oid = %s ",
                static_cast<unsigned int>(alarmId), oid.c_str());
    return m_oTrapOid;
}

Agentpp::Oidx& CTalvikOIDBasedMsgHandler::getBaseOid()
{
    static Agentpp::Oidx oid("1.3.6.1.4.1.99999.2.251.20.1.3");
    return oid;
}

bool CTalvikOIDBasedMsgHandler::useDateAndTime()
{
    return false;
}

void CTalvikOIDBasedMsgHandler::filterTrapMap(const std::map<std::string, tTrapDestInfo>& all,
                                              std::list<tTrapDestInfo>& chosen)
{
    for (const auto& [key, destination] : all) {
        if (destination.type == kDestinationType) {
            chosen.push_back(destination);
        }
    }
}
