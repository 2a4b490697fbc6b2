#pragma once

#include "host/snmp/receiver_session.h"

#include <functional>
#include <memory>
#include <string>

namespace talvik {

/// Asks a receiver of version 3 informs for its engine ID (RFC 3414, 4) without waiting: a request
/// as nobody, which the receiver answers with a report. The SNMP library's loop serves it.
class EngineDiscovery {
public:
    /// Sends the request. `ended` is called once, from the library's loop, when `running` has
    /// become false; it must not destroy this object. Null, with the reason in `problem`, when the
    /// request cannot be sent.
    static std::unique_ptr<EngineDiscovery>
    start(const SessionSettings& settings, std::function<void()> ended, std::string& problem);

    bool running() const { return running_; }

    /// What was found; empty when nobody answered or there was no ID in the answer.
    const std::string& engineId() const { return engineId_; }

private:
    EngineDiscovery(ReceiverSession session, std::function<void()> ended);

    static int onEvent(int operation, netsnmp_session* session, int id, netsnmp_pdu* pdu,
                       void* discovery);
    void handle(int operation, const netsnmp_pdu& pdu);
    bool ask(std::string& problem);

    std::function<void()> ended_;
    std::string engineId_;
    bool running_ = false;
    ReceiverSession session_;  // the last: closing it calls back
};

}  // namespace talvik
