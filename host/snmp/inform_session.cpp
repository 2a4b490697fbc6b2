#include "host/snmp/inform_session.h"

#include "host/snmp/callback_guard.h"
#include "host/snmp/trap_pdu.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace talvik {

struct InformSession::Request {
    InformSession* owner;
    Done done;
    std::list<Request>::iterator place;
};

namespace {

constexpr int kForget = 1;  ///< what a callback returns to have the library forget the request

std::string reportText(int type)
{
    switch (type) {
    case SNMPERR_UNKNOWN_USER_NAME:
        return "it does not know the user";
    case SNMPERR_AUTHENTICATION_FAILURE:
        return "it has another authentication passphrase or algorithm for the user";
    case SNMPERR_DECRYPTION_ERR:
        return "it has another privacy passphrase or algorithm for the user";
    case SNMPERR_UNSUPPORTED_SEC_LEVEL:
        return "the user may not authenticate and encrypt there";
    case SNMPERR_NOT_IN_TIME_WINDOW:
        return "its clock of the engine and ours do not agree";
    default:
        break;
    }
    return "report of type " + std::to_string(type);
}

}  // namespace

InformSession::InformSession(ReceiverSession session, bool version3)
    : version3_(version3),
      session_(std::move(session))
{
}

std::unique_ptr<InformSession> InformSession::open(const SessionSettings& settings,
                                                   std::string& problem)
{
    auto session = openReceiverSession(settings, problem);
    if (!session) {
        return nullptr;
    }
    return std::unique_ptr<InformSession>(new InformSession(std::move(session), settings.version3));
}

InformSession::~InformSession()
{
    closing_ = true;
    session_.reset();
}

bool InformSession::send(const TrapContent& content, Done done, std::string& problem)
{
    auto pdu = makeTrapPdu(SNMP_MSG_INFORM, version3_ ? SNMP_VERSION_3 : SNMP_VERSION_2c, content);
    requests_.push_back({this, std::move(done), {}});
    const auto place = std::prev(requests_.end());
    place->place = place;
    sending_ = true;  // a failure is told by a callback and by the result; one is enough
    errno = 0;
    const bool sent =
        snmp_async_send(session_.get(), pdu.get(), &InformSession::onEvent, &*place) != 0;
    sending_ = false;
    if (!sent) {
        problem = session_->s_snmp_errno == SNMPERR_BAD_SENDTO
                      ? std::strerror(session_->s_errno)
                      : snmp_api_errstring(session_->s_snmp_errno);
        requests_.erase(place);
        return false;
    }
    static_cast<void>(pdu.release());  // it is the library's now
    return true;
}

int InformSession::error() const
{
    return session_->s_snmp_errno == SNMPERR_BAD_SENDTO ? session_->s_errno : 0;
}

int InformSession::onEvent(int operation, netsnmp_session*, int, netsnmp_pdu* pdu, void* request)
{
    return guardCallback("answer to an inform", kForget, [&] {
        const auto& known = *static_cast<const Request*>(request);
        known.owner->handle(operation, pdu, known);
        return kForget;
    });
}

void InformSession::handle(int operation, const netsnmp_pdu* pdu, const Request& request)
{
    if (sending_) {
        return;
    }
    switch (operation) {
    case NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE:
        if (pdu->command == SNMP_MSG_REPORT) {
            const int type = snmpv3_get_report_type(const_cast<netsnmp_pdu*>(pdu));
            finish(request,
                   type == SNMPERR_UNKNOWN_ENG_ID ? InformEnd::UnknownEngine : InformEnd::Refused,
                   reportText(type));
        } else if (pdu->errstat != SNMP_ERR_NOERROR) {
            finish(request, InformEnd::Refused, snmp_errstring(static_cast<int>(pdu->errstat)));
        } else {
            finish(request, InformEnd::Answered, "");
        }
        break;
    case NETSNMP_CALLBACK_OP_TIMED_OUT:
        finish(request, closing_ ? InformEnd::Closed : InformEnd::NoAnswer, "");
        break;
    case NETSNMP_CALLBACK_OP_SEND_FAILED:
        finish(request, InformEnd::NotSent, std::strerror(session_->s_errno));
        break;
    default:  // it was sent again; or a report's first of two calls
        break;
    }
}

void InformSession::finish(const Request& request, InformEnd end, const std::string& detail)
{
    std::list<Request> ended;
    ended.splice(ended.end(), requests_, request.place);
    ended.front().done(end, detail);
}

}  // namespace talvik
