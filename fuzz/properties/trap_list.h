#pragma once

#include "trap/trap_dest_info.h"

#include <optional>
#include <string>
#include <vector>

namespace talvik::fuzz {

/// The last call that was to change a list: its letter ('c', 'm' or 'd'), record and word.
struct TrapChange {
    char call = ' ';
    tTrapDestInfo destination;
    unsigned word3 = 0;
};

/// A host's list of trap destinations as simple as one can be: handler and model each work on one
/// of their own, and the two must stay the same.
struct TrapList {
    std::vector<tTrapDestInfo> rows;
    std::optional<TrapChange> lastChange;

    /// Results of the changing calls: 0, or 1 to 3 for a full list, a taken and an unknown index.
    int create(const tTrapDestInfo& destination, unsigned word3);
    int modify(const tTrapDestInfo& destination, unsigned word3);
    int remove(const tTrapDestInfo& destination, unsigned word3);

private:
    std::vector<tTrapDestInfo>::iterator rowOf(const std::string& index);
};

bool operator==(const TrapList& one, const TrapList& other);

/// What this host accepts: rules that short inputs both keep and break.
bool isAddressAccepted(const std::string& address);
bool isIndexAccepted(const std::string& index);
bool isPortAccepted(unsigned port);
bool isVersionAccepted(unsigned version);
bool isTypeAccepted(unsigned type);
bool isUserAccepted(const std::string& user);
bool isReachable(const std::string& address);

}  // namespace talvik::fuzz
