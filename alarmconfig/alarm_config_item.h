#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// One alarm definition: its texts, its trap OID and which parameters are enumerated. Built once
/// while the catalogue is loaded, unchanged from then on; the parser owns it.
class CAlarmConfigItem {
public:
    using PositionList = std::vector<std::pair<unsigned int, std::string>>;

    /// The texts, none of them null, are copied; `paramEnumPositions` starts empty.
    CAlarmConfigItem(unsigned long long ullId, unsigned int uiId, const char* pName,
                     const char* pReason, const char* pSuggestion, const char* pDetail,
                     const char* pLocation, const char* pAlarmOid);

    std::uint64_t eventId;
    std::uint32_t eventIdLow32;  ///< the low 32 bits of `eventId`
    std::string name;
    std::string reason;
    std::string suggestion;  ///< may hold placeholders, like `detail` and `location`
    std::string detail;
    std::string location;
    std::string alarmOid;             ///< the trap OID, dotted decimal
    PositionList paramEnumPositions;  ///< parameter position and enumeration type, as defined
};
