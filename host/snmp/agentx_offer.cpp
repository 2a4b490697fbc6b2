#include "host/snmp/agentx_offer.h"

namespace talvik {

namespace {

constexpr int kRegister = 1;  ///< the library's SNMPD_CALLBACK_REGISTER_OID

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

std::optional<std::string> offerSubtree(netsnmp_subtree& subtree, LibraryLog& log)
{
    auto what = parametersOf(subtree);
    // The library tells what came of it in its log and in `snmp_errno` only.
    log.startKeeping();
    snmp_errno = SNMPERR_SUCCESS;
    snmp_call_callbacks(SNMP_CALLBACK_APPLICATION, kRegister, &what);
    for (const auto& line : log.stopKeeping()) {
        if (line.level == LibraryLog::Level::Error) {
            return line.text;
        }
    }
    if (snmp_errno == SNMPERR_TIMEOUT) {
        return "no answer";
    }
    return std::nullopt;
}

}  // namespace talvik
