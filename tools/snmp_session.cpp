#include "tools/snmp_session.h"

#include "host/startup_error.h"
#include "tools/net_snmp_client.h"
#include "tools/snmp_library.h"

#include <cstdlib>

namespace talvik::ctl {

namespace {

bool hasDefault(int which)
{
    const char* text = netsnmp_ds_get_string(NETSNMP_DS_LIBRARY_ID, which);
    return text != nullptr && *text != '\0';
}

long versionOf(const SnmpSettings& settings)
{
    if (settings.version == "1") {
        return SNMP_VERSION_1;
    }
    if (settings.version == "2c") {
        return SNMP_VERSION_2c;
    }
    if (settings.version == "3") {
        return SNMP_VERSION_3;
    }
    switch (netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_SNMPVERSION)) {
    case NETSNMP_DS_SNMP_VERSION_1:
        return SNMP_VERSION_1;
    case NETSNMP_DS_SNMP_VERSION_2c:
        return SNMP_VERSION_2c;
    default:
        return SNMP_VERSION_3;
    }
}

int levelOf(const SnmpSettings& settings)
{
    if (settings.level == "authPriv") {
        return SNMP_SEC_LEVEL_AUTHPRIV;
    }
    if (settings.level == "authNoPriv") {
        return SNMP_SEC_LEVEL_AUTHNOPRIV;
    }
    if (settings.level == "noAuthNoPriv") {
        return SNMP_SEC_LEVEL_NOAUTH;
    }
    return netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_SECLEVEL);
}

void setCommunity(netsnmp_session& session, SnmpSettings& settings)
{
    if (!settings.community.empty()) {
        session.community = reinterpret_cast<u_char*>(settings.community.data());
        session.community_len = settings.community.size();
    } else if (hasDefault(NETSNMP_DS_LIB_COMMUNITY)) {
        session.community_len = SNMP_DEFAULT_COMMUNITY_LEN;
    } else {
        throw StartupError("no community: name one with --community, or put defCommunity into "
                           "snmp.conf or the --credentials file");
    }
}

/// The library lets its own duplicate of the protocol's name go, so it gets one.
oid* duplicate(const oid* name, std::size_t length)
{
    return snmp_duplicate_objid(name, length);
}

void setAuthProtocol(netsnmp_session& session, const SnmpSettings& settings)
{
    if (settings.authProtocol.empty()) {
        return;
    }
    const int type = usm_lookup_auth_type(settings.authProtocol.c_str());
    const oid* name = type < 0 ? nullptr : sc_get_auth_oid(type, &session.securityAuthProtoLen);
    if (name == nullptr) {
        throw StartupError("unknown authentication protocol \"" + settings.authProtocol +
                           "\"; --auth-protocol takes MD5, SHA, SHA-224, SHA-256, SHA-384 or "
                           "SHA-512");
    }
    session.securityAuthProto = duplicate(name, session.securityAuthProtoLen);
}

void setPrivProtocol(netsnmp_session& session, const SnmpSettings& settings)
{
    if (settings.privProtocol.empty()) {
        return;
    }
    const int type = usm_lookup_priv_type(settings.privProtocol.c_str());
    const oid* name = type < 0 ? nullptr : sc_get_priv_oid(type, &session.securityPrivProtoLen);
    if (name == nullptr) {
        throw StartupError("unknown privacy protocol \"" + settings.privProtocol +
                           "\"; --priv-protocol takes DES or AES");
    }
    session.securityPrivProto = duplicate(name, session.securityPrivProtoLen);
}

void requirePassphrases(int level)
{
    const bool common = hasDefault(NETSNMP_DS_LIB_PASSPHRASE);
    if (level >= SNMP_SEC_LEVEL_AUTHNOPRIV && !common &&
        !hasDefault(NETSNMP_DS_LIB_AUTHPASSPHRASE) && !hasDefault(NETSNMP_DS_LIB_AUTHMASTERKEY) &&
        !hasDefault(NETSNMP_DS_LIB_AUTHLOCALIZEDKEY)) {
        throw StartupError("no authentication passphrase: put defAuthPassphrase into snmp.conf or "
                           "the --credentials file");
    }
    if (level == SNMP_SEC_LEVEL_AUTHPRIV && !common && !hasDefault(NETSNMP_DS_LIB_PRIVPASSPHRASE) &&
        !hasDefault(NETSNMP_DS_LIB_PRIVMASTERKEY) && !hasDefault(NETSNMP_DS_LIB_PRIVLOCALIZEDKEY)) {
        throw StartupError("no privacy passphrase: put defPrivPassphrase into snmp.conf or the "
                           "--credentials file");
    }
}

void setUser(netsnmp_session& session, SnmpSettings& settings)
{
    if (!settings.user.empty()) {
        session.securityName = settings.user.data();
        session.securityNameLen = settings.user.size();
    } else if (!hasDefault(NETSNMP_DS_LIB_SECNAME)) {
        throw StartupError("no user: name one with --snmp-user, or put defSecurityName into "
                           "snmp.conf or the --credentials file (for SNMPv1 or v2c give "
                           "--snmp-version and a community)");
    }
    session.securityLevel = levelOf(settings);
    requirePassphrases(session.securityLevel);
    setAuthProtocol(session, settings);
    setPrivProtocol(session, settings);
}

std::string errorText(netsnmp_session& session)
{
    char* text = nullptr;
    int systemError = 0;
    int libraryError = 0;
    snmp_error(&session, &systemError, &libraryError, &text);
    std::string result = text == nullptr ? "" : text;
    std::free(text);
    const auto logged = takeLibraryErrors();
    return logged.empty() ? result : result + " (" + logged + ")";
}

std::string noAnswerReason(const SnmpSettings& settings)
{
    const unsigned tries = settings.retries + 1;
    return "no answer from " + settings.agent + " within " + std::to_string(settings.timeoutMs) +
           " ms" + (tries == 1 ? "" : ", asked " + std::to_string(tries) + " times");
}

std::string noAnswerAdvice(const SnmpSettings& settings, long version)
{
    std::string advice =
        "make sure that talvik-agentd runs and listens on " + settings.agent + " (--agent)";
    // Requests that the agent cannot decrypt may stay without an answer too.
    advice += version == SNMP_VERSION_3
                  ? " and that the privacy protocol and passphrase are the agent's"
                  : " and that the community is right, for an unknown one is never answered";
    return advice;
}

}  // namespace

OpenSession openSession(const SnmpSettings& given)
{
    startSnmpLibrary(given.credentialsFile);
    SnmpSettings settings = given;
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = versionOf(settings);
    session.peername = settings.agent.data();
    session.timeout = static_cast<long>(settings.timeoutMs) * 1000;
    session.retries = 0;
    if (session.version == SNMP_VERSION_3) {
        setUser(session, settings);
    } else {
        setCommunity(session, settings);
    }
    takeLibraryErrors();
    void* handle = snmp_sess_open(&session);
    const auto detail = handle == nullptr ? errorText(session) : std::string();
    std::free(session.securityAuthProto);
    std::free(session.securityPrivProto);
    if (handle == nullptr) {
        throw connectionFailure(settings, session.version, session.s_snmp_errno, detail);
    }
    return {handle, session.version};
}

Failure connectionFailure(const SnmpSettings& settings, long version, int libraryError,
                          const std::string& detail)
{
    const auto failure = [](const std::string& reason, const std::string& advice) {
        return Failure(Failure::Kind::Connection, reason, advice);
    };
    // The agent answered, with a report of why it does not take the request.
    const auto refusal = [](const std::string& reason, const std::string& advice) {
        return Failure(Failure::Kind::Refused, reason, advice);
    };
    const auto& agent = settings.agent;
    switch (libraryError) {
    case SNMPERR_TIMEOUT:
        return failure(noAnswerReason(settings), noAnswerAdvice(settings, version));
    case SNMPERR_UNKNOWN_USER_NAME:
    case SNMPERR_USM_UNKNOWNSECURITYNAME:
        return refusal(agent + " does not know the user",
                       "name a user that the agent's configuration creates (--snmp-user, or "
                       "defSecurityName in snmp.conf)");
    case SNMPERR_AUTHENTICATION_FAILURE:
    case SNMPERR_USM_AUTHENTICATIONFAILURE:
        return refusal("authentication failed at " + agent,
                       "check the authentication protocol and passphrase against the agent's "
                       "createUser line");
    case SNMPERR_DECRYPTION_ERR:
    case SNMPERR_USM_DECRYPTIONERROR:
        return refusal(agent + " could not decrypt the request",
                       "check the privacy protocol and passphrase against the agent's createUser "
                       "line");
    case SNMPERR_UNSUPPORTED_SEC_LEVEL:
    case SNMPERR_USM_UNSUPPORTEDSECURITYLEVEL:
        return refusal(agent + " does not support the security level for this user",
                       "ask for the level that the agent's configuration gives the user (--level, "
                       "or defSecurityLevel in snmp.conf)");
    case SNMPERR_NOT_IN_TIME_WINDOW:
    case SNMPERR_USM_NOTINTIMEWINDOW:
        return refusal("the request was outside the time window of " + agent,
                       "try again; if it stays, look whether two agents share one engine ID");
    case SNMPERR_BAD_ADDRESS:
    case SNMPERR_NO_SOCKET:
        return failure("cannot use the agent address " + agent + ": " + detail,
                       "name it with --agent, for example udp:192.0.2.1:1161");
    default:
        return failure("cannot talk to " + agent + ": " + detail,
                       "check the agent's address and the SNMP options");
    }
}

}  // namespace talvik::ctl
