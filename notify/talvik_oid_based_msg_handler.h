#pragma once

#include "notify/talvik_notify_msg_handler.h"

#include <agent_pp/snmp_pp_ext.h>

/// As its base, for the destinations of type 7: the trap's OID is the alarm's own, the bindings
/// hang under another base OID, and times are display text. The order of the virtual operations is
/// binary contract.
///
/// The trap OID is kept in the handler without a lock: the dispatcher asks for it and uses it for
/// one alarm at a time. The rest keeps no state.
class CTalvikOIDBasedMsgHandler : public CTalvikNotifyMsgHandler {
public:
    /// The OID that the alarm's definition names, with `arg` as its last sub-identifier; one fixed
    /// OID for an alarm without, or unknown. What is no OID in a definition gives an invalid one.
    /// The reference holds until the next call.
    Agentpp::Oidx& getTrapOid(unsigned long long alarmId, unsigned short arg) override;

    Agentpp::Oidx& getBaseOid() override;
    bool useDateAndTime() override;
    void filterTrapMap(const std::map<std::string, tTrapDestInfo>& all,
                       std::list<tTrapDestInfo>& chosen) override;

private:
    Agentpp::Oidx m_oTrapOid;
};
