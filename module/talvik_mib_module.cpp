#include "module/talvik_mib_module.h"

#include "handlers/snmp_talvik_kel_alarm_handler.h"
#include "handlers/snmp_talvik_kel_clear_alarm_handler.h"
#include "handlers/snmp_topo_handler.h"
#include "notify/talvik_notify_msg_handler.h"
#include "notify/talvik_oid_based_msg_handler.h"
#include "platform/notify_handler.h"
#include "trap/talvik_trap_addr_handler.h"

#include <memory>

namespace {

using HandlerList = std::list<std::pair<const std::string, CSnmpHandler*>>;

/// Appends one pair, with a new handler that the list's owner owns.
template <typename Handler>
void appendHandler(HandlerList& handlers, const char* oid)
{
    auto handler = std::make_unique<Handler>();
    handlers.emplace_back(oid, handler.get());
    handler.release();
}

/// Registers a new handler with the host's dispatcher, which owns it from then on.
template <typename Handler>
void registerNotifyHandler()
{
    auto handler = std::make_unique<Handler>();
    CNotifyHandler::instance()->handlers().push_back(handler.get());
    handler.release();
}

}  // namespace

// The order is that in which the dispatcher offers each alarm. What is registered before an
// allocation fails stays with the dispatcher.
bool CSNMP_Talvik_Mib_Module::init()
{
    registerNotifyHandler<CTalvikNotifyMsgHandler>();
    registerNotifyHandler<CTalvikOIDBasedMsgHandler>();
    return true;
}

std::string CSNMP_Talvik_Mib_Module::getMibFileName()
{
    return "KEL-TALVIK-MIB.json";
}

void CSNMP_Talvik_Mib_Module::getSvcHandler(HandlerList& handlers)
{
    appendHandler<CSnmpTopoHandler>(handlers, "1.3.6.1.4.1.99999.2.91.9.1");
    appendHandler<CSnmpTalvikKelAlarmHandler>(handlers, "1.3.6.1.4.1.99999.2.91.10.1.1");
    appendHandler<CSnmpTalvikKelClearAlarmHandler>(handlers, "1.3.6.1.4.1.99999.2.91.10.1.2");
    appendHandler<CTalvikTrapAddrHandler>(handlers, "1.3.6.1.4.1.99999.2.91.10.4.1");
}

extern "C" __attribute__((visibility("default"))) CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    auto module = std::make_unique<CSNMP_Talvik_Mib_Module>();
    return module->init() ? module.release() : nullptr;
}
