#include "bench/trap_handlers.h"

#include "notify/talvik_notify_msg_handler.h"
#include "notify/talvik_oid_based_msg_handler.h"
#include "platform/notify_handler.h"

#include <memory>

void talvik::bench::registerHandlers()
{
    auto& handlers = CNotifyHandler::instance()->handlers();
    handlers.push_back(std::make_unique<CTalvikNotifyMsgHandler>().release());
    handlers.push_back(std::make_unique<CTalvikOIDBasedMsgHandler>().release());
}
