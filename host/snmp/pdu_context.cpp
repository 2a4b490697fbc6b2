#include "host/snmp/pdu_context.h"

#include <cstdlib>

namespace talvik {

namespace {

CKEL_SnmpContext::Operation operationOf(int pduType)
{
    switch (pduType) {
    case SNMP_MSG_GETNEXT:
        return CKEL_SnmpContext::Operation::GetNext;
    case SNMP_MSG_GETBULK:
        return CKEL_SnmpContext::Operation::GetBulk;
    case SNMP_MSG_SET:
        return CKEL_SnmpContext::Operation::Set;
    default:
        return CKEL_SnmpContext::Operation::Get;
    }
}

/// Whether an AgentX master passed the request on, which does not tell who asks.
bool isThroughMaster(const netsnmp_pdu& pdu)
{
    constexpr long kAgentxVersions = 0xC0;
    return (pdu.version & kAgentxVersions) == kAgentxVersions;
}

std::string userOf(const netsnmp_pdu& pdu)
{
    if (pdu.version == SNMP_VERSION_3) {
        return pdu.securityName == nullptr ? std::string()
                                           : std::string(pdu.securityName, pdu.securityNameLen);
    }
    return {pdu.community, pdu.community + pdu.community_len};
}

std::string sourceOf(const netsnmp_agent_session& session)
{
    auto* transport = snmp_sess_transport(snmp_sess_pointer(session.session));
    if (transport == nullptr || transport->f_fmtaddr == nullptr) {
        return {};
    }
    char* text = transport->f_fmtaddr(transport, session.pdu->transport_data,
                                      session.pdu->transport_data_length);
    std::string source = text == nullptr ? "" : text;
    std::free(text);
    return source;
}

}  // namespace

CKEL_SnmpContext contextOf(const netsnmp_agent_request_info& info)
{
    CKEL_SnmpContext context;
    if (info.asp == nullptr || info.asp->pdu == nullptr) {
        return context;
    }
    const auto& pdu = *info.asp->pdu;
    context.operation = operationOf(pdu.command);
    context.pduType = pdu.command;
    context.version = pdu.version;
    context.user = userOf(pdu);
    if (pdu.contextName != nullptr) {
        context.contextName.assign(pdu.contextName, pdu.contextNameLen);
    }
    context.source = isThroughMaster(pdu) ? "the AgentX master" : sourceOf(*info.asp);
    return context;
}

}  // namespace talvik
