#pragma once

#include <list>
#include <string>
#include <utility>

class CSnmpHandler;

/// What the module's factory hands to the host. The order of the virtual operations is binary
/// contract.
///
/// The host calls all of it from one thread during start-up and destroys the object through its
/// virtual destructor.
class CSNMP_Svc_Module {
public:
    virtual ~CSNMP_Svc_Module() = default;

    /// File name, without a path, of the MIB description that the host loads for this module.
    virtual std::string getMibFileName() = 0;

    /// Appends one (dotted OID without leading dot, new handler) pair for each subtree that the
    /// module serves. Entries already in `handlers` stay. The host owns the handlers from then on
    /// and deletes them before it unloads the module.
    virtual void
    getSvcHandler(std::list<std::pair<const std::string, CSnmpHandler*>>& handlers) = 0;

protected:
    CSNMP_Svc_Module() = default;
    CSNMP_Svc_Module(const CSNMP_Svc_Module&) = default;
    CSNMP_Svc_Module& operator=(const CSNMP_Svc_Module&) = default;
};

/// The type of the exported factory `SNMP_SvcModuleCreator`: a new module object that the host
/// owns, or null.
using SNMP_SvcModuleCreatorType = CSNMP_Svc_Module* (*)();
