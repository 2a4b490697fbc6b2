#pragma once

#include <list>

struct tTrapDestInfo;

/// The host's list of trap destinations. Changes are serialised by the host; every call may come
/// from any thread that runs a handler. The changing calls receive the request header's `uiWord3`
/// unchanged: the row index that a manager named in a create, or all bits set when none was named.
class CSNMP_TrapApi {
public:
    /// Appends every destination, in the host's order. 0 on success, non-zero when the list cannot
    /// be read.
    static int getAllTrapAddr(std::list<tTrapDestInfo>& destinations);

    /// Adds a destination (its `index` is empty: the host allocates one). 0 on success; any other
    /// result goes back to the manager as an SNMP error.
    static int createTrapAddr(const tTrapDestInfo& destination, unsigned int uiWord3);

    /// Replaces the destination whose `index` matches. Result as for create.
    static int modifyTrapAddr(const tTrapDestInfo& destination, unsigned int uiWord3);

    /// Removes the destination whose `index` matches. Result as for create.
    static int deleteTrapAddr(const tTrapDestInfo& destination, unsigned int uiWord3);
};
