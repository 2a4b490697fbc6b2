#pragma once

#include <string>
#include <vector>

struct tTrapDestInfo;

/// Checks of trap destinations and the text splitter. Every check looks only at what its name says,
/// changes nothing and never blocks; all are callable from any thread.
class SnmpUtil {
public:
    /// True if the text is an acceptable destination: an IPv4 or IPv6 address or a domain name.
    static bool CheckIPAddrOK(std::string address);

    /// True if the record's `index` is acceptable.
    static bool CheckTrapIndOK(tTrapDestInfo& destination);

    /// True if the record's `port` is acceptable.
    static bool CheckTrapPortOK(tTrapDestInfo& destination);

    /// True if the record's `version` is acceptable.
    static bool CheckTrapVerOK(tTrapDestInfo& destination);

    /// True if the record's `type` is acceptable.
    static bool CheckTrapTypeOK(tTrapDestInfo& destination);

    /// True if the record's `user` is acceptable.
    static bool CheckTrapUserOK(tTrapDestInfo& destination);

    /// True if the address or name can be reached or resolved, as far as the host knows at this
    /// moment.
    static bool TestDomainConnectivity(const char* address);

    /// Splits `text` at every `separator` and appends the fields to `fields` in order. Empty fields
    /// are kept: a field's position carries meaning.
    static void SplitToStr(std::string text, char separator, std::vector<std::string>& fields);
};
