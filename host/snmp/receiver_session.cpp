#include "host/snmp/receiver_session.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>

namespace talvik {

namespace {

std::string peerOf(const SessionSettings& settings)
{
    const auto port = ":" + std::to_string(settings.port);
    return settings.address.find(':') == std::string::npos
               ? "udp:" + settings.address + port
               : "udp6:[" + settings.address + "]" + port;
}

/// The library's sockets wait for room in the send buffer and are inherited.
void setSocketFlags(netsnmp_session* session)
{
    const auto* transport = snmp_sess_transport(snmp_sess_pointer(session));
    if (transport != nullptr && transport->sock >= 0) {
        fcntl(transport->sock, F_SETFL, O_NONBLOCK);
        fcntl(transport->sock, F_SETFD, FD_CLOEXEC);
    }
}

}  // namespace

ReceiverSession openReceiverSession(const SessionSettings& settings, std::string& problem)
{
    auto copy = settings;  // the library takes pointers to what it may write to
    auto peer = peerOf(settings);
    char noContext[1] = {};
    netsnmp_session wanted;
    snmp_sess_init(&wanted);
    wanted.flags |= SNMP_FLAGS_DONT_PROBE;
    wanted.peername = peer.data();
    wanted.localname = copy.source.empty() ? nullptr : copy.source.data();
    wanted.timeout = std::chrono::microseconds(settings.timeout).count();
    wanted.retries = settings.retries;
    if (settings.version3) {
        wanted.version = SNMP_VERSION_3;
        wanted.securityModel = SNMP_SEC_MODEL_USM;
        wanted.securityLevel = copy.user.empty() ? SNMP_SEC_LEVEL_NOAUTH : SNMP_SEC_LEVEL_AUTHPRIV;
        wanted.securityName = copy.user.data();
        wanted.securityNameLen = copy.user.size();
        wanted.securityEngineID = reinterpret_cast<u_char*>(copy.engineId.data());
        wanted.securityEngineIDLen = copy.engineId.size();
        wanted.contextName = noContext;
    } else {
        wanted.version = SNMP_VERSION_2c;
        wanted.community = reinterpret_cast<u_char*>(copy.community.data());
        wanted.community_len = copy.community.size();
    }
    errno = 0;
    ReceiverSession session(snmp_open(&wanted));
    if (!session) {
        problem = "no session can be opened: " +
                  std::string(errno != 0 ? std::strerror(errno)
                                         : snmp_api_errstring(wanted.s_snmp_errno));
        return nullptr;
    }
    // Opening took the flag away; the first request to an unknown engine would stop the agent.
    session->flags |= SNMP_FLAGS_DONT_PROBE;
    setSocketFlags(session.get());
    return session;
}

}  // namespace talvik
