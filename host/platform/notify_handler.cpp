#include "platform/notify_handler.h"

#include "framework/notify_msg_handler.h"
#include "host/platform/notification_handlers.h"

CNotifyHandler::CNotifyHandler() = default;

// What is still listed belongs to a module that the process may no longer hold.
CNotifyHandler::~CNotifyHandler() = default;

CNotifyHandler* CNotifyHandler::instance()
{
    static CNotifyHandler dispatcher;
    return &dispatcher;
}

namespace talvik {

void dropNotificationHandlers()
{
    auto& handlers = CNotifyHandler::instance()->handlers();
    while (!handlers.empty()) {
        auto* const handler = handlers.front();
        handlers.pop_front();
        delete handler;
    }
}

}  // namespace talvik
