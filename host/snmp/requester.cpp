#include "host/snmp/requester.h"

#include "host/platform/log_text.h"

namespace talvik {

namespace {

constexpr long kVersion1 = 0;
constexpr long kVersion2c = 1;
constexpr long kVersion3 = 3;

}  // namespace

std::string requesterOf(const CKEL_SnmpContext& context)
{
    if (context.version == kVersion3) {
        return "user " + oneLine(context.user) + " from " + oneLine(context.source);
    }
    if (context.version != kVersion1 && context.version != kVersion2c) {
        return "a manager through " + oneLine(context.source);
    }
    return std::string(context.version == kVersion1 ? "v1" : "v2c") + " from " +
           oneLine(context.source);
}

}  // namespace talvik
