#include "host/snmp/set_phases.h"

#include "host/snmp/callback_guard.h"
#include "host/snmp/pdu_context.h"
#include "host/snmp/varbind.h"

#include <new>
#include <utility>

namespace talvik {

namespace {

void releasePart(void* held)
{
    delete static_cast<SetPart*>(held);
}

int codeOf(SetError error)
{
    switch (error) {
    case SetError::NoCreation:
        return SNMP_ERR_NOCREATION;
    case SetError::NotWritable:
        return SNMP_ERR_NOTWRITABLE;
    case SetError::WrongType:
        return SNMP_ERR_WRONGTYPE;
    case SetError::WrongLength:
        return SNMP_ERR_WRONGLENGTH;
    case SetError::WrongValue:
        return SNMP_ERR_WRONGVALUE;
    case SetError::InconsistentName:
        return SNMP_ERR_INCONSISTENTNAME;
    case SetError::InconsistentValue:
        return SNMP_ERR_INCONSISTENTVALUE;
    case SetError::ResourceUnavailable:
        return SNMP_ERR_RESOURCEUNAVAILABLE;
    case SetError::CommitFailed:
        return SNMP_ERR_COMMITFAILED;
    case SetError::UndoFailed:
        return SNMP_ERR_UNDOFAILED;
    case SetError::GenErr:
        break;
    }
    return SNMP_ERR_GENERR;
}

SetPart& begin(const ObjectId& id, const std::string& key, netsnmp_agent_request_info* info,
               netsnmp_request_info* requests, const SetPartMaker& make)
{
    std::vector<WrittenVariable> variables;
    for (auto* request = requests; request != nullptr; request = request->next) {
        variables.push_back({suffixOf(*request->requestvb, id), valueOf(*request->requestvb)});
    }
    auto made = make(contextOf(*info), std::move(variables));
    auto* node = netsnmp_create_data_list(key.c_str(), made.get(), &releasePart);
    if (node == nullptr) {
        throw std::bad_alloc();
    }
    netsnmp_agent_add_list_data(info, node);
    return *made.release();
}

/// The library keeps the error of another part of the request unless it hears of undoFailed, so
/// that an exception, which may leave the change in place, has to become that too.
SetOutcome takeBack(SetPart& part) noexcept
{
    return guardCallback("SET: cannot take back what was done; it has to be set right by hand",
                         SetOutcome(SetFault{SetError::UndoFailed, 0}),
                         [&] { return part.undo(); });
}

/// True if an earlier part of the request failed in this phase; the library goes through the others
/// all the same.
bool hasFailedElsewhere(const netsnmp_agent_request_info& info)
{
    return info.asp->status != SNMP_ERR_NOERROR;
}

SetOutcome take(SetPart& part, const netsnmp_agent_request_info& info)
{
    switch (info.mode) {
    case MODE_SET_RESERVE1:
        return part.check();
    case MODE_SET_RESERVE2:
        return part.prepare();
    case MODE_SET_ACTION:
        // What is not done has not to be taken back.
        return hasFailedElsewhere(info) ? std::nullopt : part.act();
    case MODE_SET_UNDO:
        return takeBack(part);
    case MODE_SET_FREE:
        part.abandon();
        return std::nullopt;
    default:
        return std::nullopt;  // COMMIT: nothing is left to do
    }
}

void report(const SetFault& fault, netsnmp_agent_request_info* info, netsnmp_request_info* requests)
{
    auto* request = requests;
    for (auto left = fault.position; left != 0 && request->next != nullptr; --left) {
        request = request->next;
    }
    if (fault.error == SetError::UndoFailed) {
        // This becomes the response's error index: undoFailed names no variable. But the library
        // tells it for the first part of a request only, and for others keeps error and index.
        request->index = requests->index == 1 ? 0 : static_cast<int>(info->asp->index);
    }
    netsnmp_set_request_error(info, request, codeOf(fault.error));
}

}  // namespace

void takeSetPhase(const ObjectId& id, const std::string& key, netsnmp_agent_request_info* info,
                  netsnmp_request_info* requests, const SetPartMaker& make)
{
    auto* held = static_cast<SetPart*>(netsnmp_agent_get_list_data(info, key.c_str()));
    if (held == nullptr && info->mode != MODE_SET_RESERVE1) {
        return;  // nothing was begun, so there is nothing to free or to take back
    }
    auto& part = held == nullptr ? begin(id, key, info, requests, make) : *held;
    if (const auto outcome = take(part, *info)) {
        report(*outcome, info, requests);
    }
}

}  // namespace talvik
