#include "platform/snmp_util.h"

#include "host/platform/destination_address.h"
#include "host/platform/name_cache.h"
#include "host/platform/trap_rules.h"

namespace rules = talvik::trap_rules;

bool SnmpUtil::CheckIPAddrOK(std::string address)
{
    return talvik::destinationKind(address) != talvik::DestinationKind::None;
}

bool SnmpUtil::CheckTrapIndOK(tTrapDestInfo& destination)
{
    return rules::parseIndex(destination.index).has_value();
}

bool SnmpUtil::CheckTrapPortOK(tTrapDestInfo& destination)
{
    return rules::isPort(destination.port);
}

bool SnmpUtil::CheckTrapVerOK(tTrapDestInfo& destination)
{
    return rules::isVersion(destination.version);
}

bool SnmpUtil::CheckTrapTypeOK(tTrapDestInfo& destination)
{
    return rules::isType(destination.type);
}

bool SnmpUtil::CheckTrapUserOK(tTrapDestInfo& destination)
{
    return rules::isUser(destination.user);
}

bool SnmpUtil::TestDomainConnectivity(const char* address)
{
    return address != nullptr && talvik::nameCache().resolves(address);
}

void SnmpUtil::SplitToStr(std::string text, char separator, std::vector<std::string>& fields)
{
    std::size_t start = 0;
    for (auto end = text.find(separator); end != std::string::npos;
         end = text.find(separator, start)) {
        fields.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    fields.push_back(text.substr(start));
}
