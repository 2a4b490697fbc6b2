#include "host/snmp/engine_discovery.h"

#include "host/snmp/callback_guard.h"
#include "host/snmp/trap_pdu.h"

#include <cstring>
#include <new>
#include <utility>

namespace talvik {

namespace {

/// A request without variables, user and engine ID.
PduPtr makeProbe()
{
    PduPtr pdu(snmp_pdu_create(SNMP_MSG_GET));
    if (!pdu) {
        throw std::bad_alloc();
    }
    pdu->version = SNMP_VERSION_3;
    pdu->securityName = strdup("");
    pdu->securityLevel = SNMP_SEC_LEVEL_NOAUTH;
    pdu->securityModel = SNMP_SEC_MODEL_USM;
    return pdu;
}

}  // namespace

EngineDiscovery::EngineDiscovery(ReceiverSession session, std::function<void()> ended)
    : ended_(std::move(ended)),
      session_(std::move(session))
{
}

std::unique_ptr<EngineDiscovery> EngineDiscovery::start(const SessionSettings& settings,
                                                        std::function<void()> ended,
                                                        std::string& problem)
{
    auto asNobody = settings;
    asNobody.version3 = true;
    asNobody.user.clear();
    asNobody.engineId.clear();
    auto session = openReceiverSession(asNobody, problem);
    if (!session) {
        return nullptr;
    }
    std::unique_ptr<EngineDiscovery> discovery(
        new EngineDiscovery(std::move(session), std::move(ended)));
    return discovery->ask(problem) ? std::move(discovery) : nullptr;
}

bool EngineDiscovery::ask(std::string& problem)
{
    auto pdu = makeProbe();
    if (snmp_async_send(session_.get(), pdu.get(), &EngineDiscovery::onEvent, this) == 0) {
        problem = session_->s_snmp_errno == SNMPERR_BAD_SENDTO
                      ? std::strerror(session_->s_errno)
                      : snmp_api_errstring(session_->s_snmp_errno);
        return false;
    }
    static_cast<void>(pdu.release());  // it is the library's now
    running_ = true;
    return true;
}

int EngineDiscovery::onEvent(int operation, netsnmp_session*, int, netsnmp_pdu* pdu,
                             void* discovery)
{
    return guardCallback("answer to an engine discovery", 1, [&] {
        static_cast<EngineDiscovery*>(discovery)->handle(operation, *pdu);
        return 1;
    });
}

void EngineDiscovery::handle(int operation, const netsnmp_pdu& pdu)
{
    const bool answered = operation == NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE;
    if (!running_ || (!answered && operation != NETSNMP_CALLBACK_OP_TIMED_OUT &&
                      operation != NETSNMP_CALLBACK_OP_SEND_FAILED)) {
        return;  // it was sent again; or a report's first of two calls
    }
    running_ = false;
    if (answered && pdu.command == SNMP_MSG_REPORT) {
        engineId_.assign(pdu.securityEngineID, pdu.securityEngineID + pdu.securityEngineIDLen);
    }
    ended_();
}

}  // namespace talvik
