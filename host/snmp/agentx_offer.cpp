#include "host/snmp/agentx_offer.h"

// Exported by the library, declared in none of its headers: sends one Register and waits for the
// answer. 1 when the master has taken it, 0 for anything else.
extern "C" SNMPCallback agentx_registration_callback;

namespace talvik {

namespace {

constexpr int kRegister = 1;    ///< the library's SNMPD_CALLBACK_REGISTER_OID
constexpr int kUnregister = 2;  ///< its SNMPD_CALLBACK_UNREGISTER_OID
constexpr int kTaken = 1;

register_parameters parametersOf(netsnmp_subtree& subtree)
{
    register_parameters what{};
    what.name = subtree.name_a;
    what.namelen = subtree.namelen;
    what.priority = subtree.priority;
    what.range_subid = subtree.range_subid;
    what.range_ubound = subtree.range_ubound;
    what.timeout = subtree.timeout;
    what.flags = subtree.flags;
    const auto* registered = subtree.reginfo;
    const bool hasContext = registered != nullptr && registered->contextName != nullptr;
    what.contextName = hasContext ? registered->contextName : "";
    return what;
}

}  // namespace

std::vector<netsnmp_subtree*> subtreesToOffer()
{
    std::vector<netsnmp_subtree*> all;
    for (auto* context = get_top_context_cache(); context != nullptr; context = context->next) {
        for (auto* one = context->first_subtree; one != nullptr; one = one->next) {
            for (auto* part = one; part != nullptr; part = part->children) {
                if (part->namelen > 1) {
                    all.push_back(part);
                }
            }
        }
    }
    return all;
}

bool isTaken(const netsnmp_subtree* subtree)
{
    return (subtree->flags & SUBTREE_ATTACHED) != 0;
}

void setTaken(netsnmp_subtree& subtree)
{
    subtree.flags |= SUBTREE_ATTACHED;
}

OfferAnswer offerSubtree(netsnmp_session& session, netsnmp_subtree& subtree, LibraryLog& log)
{
    auto what = parametersOf(subtree);
    auto* passed = &session;
    log.startKeeping();
    const int result = agentx_registration_callback(SNMP_CALLBACK_APPLICATION, kRegister, &what,
                                                    static_cast<void*>(&passed));
    const auto lines = log.stopKeeping();
    if (result == kTaken) {
        return {OfferAnswer::Kind::Taken, {}};
    }
    // Why it is not: an answer that says so is in the library's log, its absence nowhere.
    for (const auto& line : lines) {
        if (line.level == LibraryLog::Level::Error) {
            return {OfferAnswer::Kind::Refused, line.text};
        }
    }
    return {OfferAnswer::Kind::None, {}};
}

void stopWithdrawing()
{
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, kUnregister, &agentx_registration_callback,
                             nullptr, 0);
}

}  // namespace talvik
