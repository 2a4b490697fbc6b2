#include "tools/request_refusal.h"

#include "backend/protocol.h"
#include "host/link/backend_link.h"
#include "host/link/receiver_tags.h"

#include <cstdio>

namespace talvik::ctl {

namespace {

namespace result = backend::result;

std::string hex(int code)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", static_cast<unsigned>(code));
    return text;
}

std::string nameOf(const RefusedRequest& request)
{
    return request.peer == Peer::Agent ? "the agent" : "the back end";
}

std::string sameRelease(const RefusedRequest& request)
{
    return "make sure that talvikctl and what listens on " + request.socket +
           " are of the same release, and look at " + nameOf(request) + "'s log";
}

Failure refused(const RefusedRequest& request, const std::string& why, const std::string& advice)
{
    return {Failure::Kind::Refused, "cannot " + request.task + ": " + why, advice};
}

std::string adviceOnNobody(const RefusedRequest& request)
{
    return request.peer == Peer::Agent
               ? "start talvik-agentd, or name agent.sock in its state directory with --socket; "
                 "the user must be its own or root"
               : "start talvik-agentd, or talvik-backendd if it has a back end of its own, and "
                 "name the socket with --socket; the user must be its own or root";
}

Failure ofConnection(const RefusedRequest& request)
{
    const auto reason =
        "cannot " + request.task + " at " + request.socket + ": " + request.connectionFailure;
    if (request.code == BackendLink::kUnreachable) {
        return {Failure::Kind::Connection, reason, adviceOnNobody(request)};
    }
    const std::string perhaps = request.changes ? "; it may have been done nonetheless" : "";
    if (request.code == BackendLink::kTimedOut) {
        return {Failure::Kind::NoAnswer, reason + perhaps,
                "look at the log of what listens there and restart it if it hangs, or allow more "
                "time with --timeout"};
    }
    return {Failure::Kind::NoAnswer, reason + perhaps, sameRelease(request)};
}

Failure ofUnknownCommand(const RefusedRequest& request)
{
    const auto why = "what listens on " + request.socket + " does not know the command " +
                     request.command + " (" + std::to_string(request.number) + ")";
    const std::string other =
        request.peer == Peer::Agent
            ? "name agent.sock in the agent's state directory with --socket, not the socket of a "
              "back end"
            : "name the socket of talvik-backendd with --socket if the agent uses one";
    return refused(request, why,
                   other + "; otherwise make sure that it reads the same command numbers as " +
                       request.device);
}

Failure ofBackEnd(const RefusedRequest& request)
{
    switch (static_cast<std::uint32_t>(request.code)) {
    case result::kNoSuchAlarm:
        return {Failure::Kind::UnknownRow,
                "cannot " + request.task + ": no alarm with that serial number is active",
                "it was cleared before, or never raised; take a number that talvikctl alarm list "
                "shows"};
    case result::kOutboxFull:
        return refused(request, "too many notifications wait for the agent",
                       "start talvik-agentd so that it takes them; look at its log if it runs");
    case result::kAlreadySubscribed:
        return refused(request, "another program takes the notifications",
                       "end it, or wait until it has ended");
    case result::kStoreFailed:
        return refused(request, "the back end cannot write its alarms to disk",
                       "look at its log, and at the disk that its state directory is on");
    default:
        return refused(request,
                       nameOf(request) + " refuses " + request.command + " with the unknown code " +
                           hex(request.code),
                       sameRelease(request));
    }
}

}  // namespace

Failure refusalOf(const RefusedRequest& request)
{
    switch (static_cast<std::uint32_t>(request.code)) {
    case BackendLink::kUnreachable:
    case BackendLink::kTimedOut:
    case BackendLink::kProtocolError:
        return ofConnection(request);
    case result::kUnknownCommand:
        return ofUnknownCommand(request);
    case result::kNoCommand:
    case result::kBadRequest:
        return refused(request,
                       nameOf(request) + " takes the request " + request.command +
                           " for malformed (" + hex(request.code) + ")",
                       sameRelease(request));
    case result::kCommandFailed:
        return refused(request, request.command + " broke off",
                       "look at " + nameOf(request) + "'s log");
    case result::kAnswerTooLarge:
        return refused(request, "the answer to " + request.command + " is too large",
                       sameRelease(request));
    case receiver::kNoSuchReceiver:
        return {Failure::Kind::UnknownRow,
                "cannot " + request.task + ": there is no trap receiver with that index",
                "take an index that talvikctl trap status shows"};
    case receiver::kAgentBusy:
        return refused(request, "the agent is busy and did not come to it in time",
                       "try again; look at the agent's log if it stays so");
    default:
        return ofBackEnd(request);
    }
}

}  // namespace talvik::ctl
