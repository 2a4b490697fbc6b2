#pragma once

#include "trap/trap_dest_info.h"

#include <list>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace talvik::test {

/// Index, address, port, version, type and user of a destination.
using TrapFields = std::tuple<std::string, std::string, unsigned, unsigned, unsigned, std::string>;

TrapFields fieldsOf(const tTrapDestInfo& destination);
tTrapDestInfo destinationOf(const TrapFields& fields);

/// One changing call that reached the trap list.
struct TrapChange {
    std::string call;
    TrapFields destination;
    unsigned word3 = 0;

    bool operator==(const TrapChange& other) const;
};

std::ostream& operator<<(std::ostream& os, const TrapChange& change);

/// The host's trap list and checks under a test's control. Checks accept what is not refused here.
/// Every call is entered in `fakeHost()` under its own name first, which records its place among
/// the others and lets it throw. One for the process.
class FakeTrapHost {
public:
    void reset();

    std::list<tTrapDestInfo> destinations;
    int listResult = 0;    ///< of `getAllTrapAddr`; the list is filled whatever it is
    int changeResult = 0;  ///< of the changing calls

    std::set<std::string> refusedAddresses;
    std::set<std::string> refusedIndexes;
    std::set<unsigned> refusedPorts;
    std::set<unsigned> refusedVersions;
    std::set<unsigned> refusedTypes;
    std::set<std::string> refusedUsers;
    std::set<std::string> unreachable;

    std::vector<TrapChange> changes;
    std::vector<std::pair<std::string, TrapFields>> checks;  ///< of records, with what they saw
    std::vector<std::string> addressesChecked;
    std::vector<std::string> addressesTried;
};

FakeTrapHost& fakeTrapHost();

}  // namespace talvik::test
