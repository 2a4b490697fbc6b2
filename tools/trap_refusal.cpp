#include "tools/trap_refusal.h"

#include "tools/snmp_status.h"

namespace talvik::ctl {

namespace {

struct ColumnText {
    std::uint32_t column;
    const char* name;
    const char* advice;
};

constexpr ColumnText kColumns[] = {
    {trap_column::kPort, "port", "give a port from 1 to 65535"},
    {trap_column::kRowStatus, "row", "list what is there with talvikctl trap list"},
    {trap_column::kVersion, "version", "give v1, v2c or v3"},
    {trap_column::kAddress, "address", "give an IPv4 or IPv6 address, or a host name"},
    {trap_column::kType, "type", "give alarm, no-alarm, alarm-legacy or alarm-own-oid"},
    {trap_column::kUser, "user", "give a user name of 1 to 32 octets, or -- for none"},
};

constexpr const char* kRelease = "make sure that talvik-agentd and talvikctl are of one release";
constexpr const char* kGiveAccess =
    "use a user or community that may write: rwuser or rwcommunity, or an access line with a view "
    "for writing, in the agent's configuration";

/// The column that the answer blames, null when it blames none that is known.
const ColumnText* blamed(const std::vector<SnmpCell>& cells, const SnmpAnswer& answer)
{
    if (answer.errorIndex == 0 || answer.errorIndex > cells.size()) {
        return nullptr;
    }
    const auto column = cells[answer.errorIndex - 1].oid.at(trapEntry().size());
    for (const auto& text : kColumns) {
        if (text.column == column) {
            return &text;
        }
    }
    return nullptr;
}

std::string adviceOnValue(const ColumnText* column)
{
    return column == nullptr ? "check the values" : column->advice;
}

std::string adviceOn(int status, const ColumnText* column, bool v1)
{
    switch (status) {
    case kStatusNoAccess:
    case kStatusAuthorizationError:
        return kGiveAccess;
    case kStatusNoSuchName:
        return std::string(kGiveAccess) +
               (v1 ? "; SNMPv1 says no more, ask with --snmp-version 2c or 3 for the reason" : "");
    case kStatusBadValue:
    case kStatusWrongType:
    case kStatusWrongLength:
    case kStatusWrongEncoding:
    case kStatusWrongValue:
    case kStatusInconsistentValue:
        return adviceOnValue(column);
    case kStatusResourceUnavailable:
        return "its list is full: remove a destination that is not needed";
    case kStatusGenErr:
        return v1 ? "its list is full or cannot be stored: see the agent's log"
                  : "see the agent's log";
    case kStatusCommitFailed:
    case kStatusUndoFailed:
        return "the agent could not store its list: see its log, and the space on its disk";
    case kStatusTooBig:
        return "give shorter values";
    default:
        return kRelease;
    }
}

}  // namespace

ObjectId trapCellName(std::uint32_t column, std::uint32_t index)
{
    auto name = trapEntry();
    name.push_back(column);
    name.push_back(index);
    return name;
}

const ObjectId& trapEntry()
{
    static const ObjectId entry = {1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 4, 1, 1};
    return entry;
}

Failure unknownRow(const std::string& agent, std::uint32_t index)
{
    return Failure(Failure::Kind::UnknownRow,
                   "there is no trap destination " + std::to_string(index) + " at " + agent,
                   "see talvikctl trap list");
}

Failure missingTable(const std::string& agent)
{
    return Failure(Failure::Kind::Refused, agent + " shows no table of trap destinations",
                   "make sure that it is talvik-agentd of this release, and that the view of the "
                   "user or community includes 1.3.6.1.4.1.99999");
}

Failure nothingShown(const std::string& agent, std::uint32_t index)
{
    return Failure(Failure::Kind::Refused,
                   agent + " shows no trap destination " + std::to_string(index) +
                       ", and no other one",
                   "SNMPv1 does not tell an empty table from a hidden one: ask with --snmp-version "
                   "2c or 3, and make sure that the view of the community includes "
                   "1.3.6.1.4.1.99999");
}

Failure perhapsDone(const Failure& noAnswer)
{
    return Failure(noAnswer.kind(),
                   noAnswer.what() +
                       std::string("; the change may have been made nonetheless, check with "
                                   "talvikctl trap list"),
                   noAnswer.advice());
}

Failure refusal(const SnmpRequester& requester, const std::string& action, std::uint32_t index,
                const std::vector<SnmpCell>& cells, const SnmpAnswer& answer)
{
    const auto* column = blamed(cells, answer);
    std::string reason = requester.agent() + " refused to " + action + " trap destination " +
                         std::to_string(index) + ": " + statusName(answer.status);
    if (column != nullptr) {
        reason += std::string(" at the ") + column->name;
    }
    return Failure(Failure::Kind::Refused, reason,
                   adviceOn(answer.status, column, requester.isV1()));
}

}  // namespace talvik::ctl
