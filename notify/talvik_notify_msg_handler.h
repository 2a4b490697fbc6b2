#pragma once

#include "framework/notify_msg_handler.h"

#include <list>
#include <map>
#include <string>

#include <sys/types.h>

class CAlarmRepository_Singleton;

namespace Snmp_pp {
class OctetStr;
class Oid;
}  // namespace Snmp_pp

/// Turns an alarm record of the back end into the fourteen bindings of an alarm trap, for the
/// destinations of types 1 and 3. The order of the virtual operations is binary contract. It keeps
/// no state, so any thread may call it.
///
/// The operations that are not virtual are steps of `constructAlarmTrapVb`, but for the last two.
class CTalvikNotifyMsgHandler : public INotifyMsgHandler {
public:
    /// Looks the record's alarm up in the catalogue and builds its bindings.
    ///
    /// Returns 0, with `vbs` a new array of `getTrapVbLen()` elements that the caller frees with
    /// array `delete`. With `vbs` untouched, returns the catalogue's result when it cannot tell the
    /// alarm's texts, and -1 when a cell is missing or of the wrong kind. A `CKEL_Exception` of a
    /// catalogue that cannot be loaded passes, and so does an allocation failure; when the latter
    /// comes while bindings are filled, `vbs` is set already.
    int constructAlarmTrapVb(const CTLVRecordV3& record, Agentpp::Vbx*& vbs) override;

    /// The same OID for every alarm.
    Agentpp::Oidx& getTrapOid(unsigned long long alarmId, unsigned short arg) override;

    Agentpp::Oidx& getBaseOid() override;
    int getTrapVbLen() override;
    void filterTrapMap(const std::map<std::string, tTrapDestInfo>& all,
                       std::list<tTrapDestInfo>& chosen) override;

    /// 1 for a fault, 2 for a clear, 3 for an event. Throws `CKEL_Exception` for a missing cell or
    /// one that is no number.
    void getAlarmCategory(const CTLVRecordV3& record, unsigned int& category);

    /// `time`, seconds since 1970, as display text and as what the trap carries.
    void time2DateTime(Snmp_pp::OctetStr& text, Snmp_pp::OctetStr& value, unsigned long long time);

    // Contract: "file" stands for "fill" in these names; hosts refer to them so.

    /// Each sets its bindings of the array `vbs`, below `base`, and their slots in `summary`. A
    /// slot borrows its text from the binding until that is set again; that of the time borrows it
    /// from `text`.
    void fileAlarmTrapVbNodecode(Agentpp::Vbx*& vbs, const char** summary, Snmp_pp::Oid& base,
                                 std::string& location, std::string& suggestion);
    void fileAlarmTrapVbTitle(Agentpp::Vbx*& vbs, const char** summary, Snmp_pp::Oid& base,
                              std::string& title, unsigned int level);
    void fileAlarmTrapVbAlarmId(Agentpp::Vbx*& vbs, const char** summary, Snmp_pp::Oid& base,
                                unsigned int alarmId32);
    void fileAlarmTrapVbTime(Agentpp::Vbx*& vbs, const char** summary, Snmp_pp::Oid& base,
                             Snmp_pp::OctetStr& value, Snmp_pp::OctetStr& text);
    void fileAlarmTrapVbAddition(Agentpp::Vbx*& vbs, const char** summary, Snmp_pp::Oid& base,
                                 unsigned int serial, std::string& detail);
    void fileAlarmTrapVbAlarmCate(Agentpp::Vbx*& vbs, const char** summary, Snmp_pp::Oid& base,
                                  unsigned int category, unsigned long long alarmId);

    /// Logs the fourteen slots of `summary`, of which null ones become "Unknown".
    void dump_alarm_info(const char** summary);

    /// Takes over into the process's repository what an alarm of this category means for it:
    /// nothing for an event. Returns 0 or the repository's result.
    int putAlarmIntoRepository(u_int serial, u_int category);

    /// Adds the serial number of a fault to `repository`, removes that of any other category.
    /// Returns 0 or the repository's result.
    int updateRepository(u_int category, u_int serial, CAlarmRepository_Singleton* repository);
};
