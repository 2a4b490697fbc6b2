#pragma once

#include "host/snmp/agent_health.h"
#include "host/snmp/line_budget.h"
#include "host/snmp/trap.h"

#include <functional>
#include <list>
#include <map>
#include <string>
#include <vector>

class CTLVRecordV3;
class INotifyMsgHandler;

namespace talvik {

/// Offers each alarm record to the registered notification handlers, in their order, and hands on
/// the notification that each of them builds. On one thread.
class NotificationDispatcher {
public:
    /// Takes what a handler built, for receivers that are not empty.
    using Sink = std::function<void(Trap&& trap, const Delivery& delivery)>;

    explicit NotificationDispatcher(Sink sink);

    /// The trap destinations as they are from now on.
    void setReceivers(const std::list<tTrapDestInfo>& receivers);

    /// A handler that fails, or whose notification cannot be sent, is logged and left out; the
    /// others go on. Whatever a handler throws ends here, but for allocation failures of the host's
    /// own.
    void dispatch(const CTLVRecordV3& record, const Delivery& delivery);

    /// The registered handlers in their order, with what came of them so far.
    std::vector<NotificationHandlerHealth> handlers() const;

private:
    void offer(INotifyMsgHandler& handler, const CTLVRecordV3& record, const Delivery& delivery);

    const Sink sink_;
    std::map<std::string, tTrapDestInfo> receivers_;
    LineBudget lines_;  ///< of notifications that cannot be sent
    std::map<const INotifyMsgHandler*, NotificationHandlerCounters> counters_;
};

}  // namespace talvik
