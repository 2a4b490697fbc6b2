#pragma once

#include "platform/svc_module.h"

#include <list>
#include <string>
#include <utility>

/// The module object that the factory hands to the host. It keeps no pointer to anything that it
/// creates. The order of the virtual operations is binary contract. All of it is called from one
/// thread during start-up.
class CSNMP_Talvik_Mib_Module : public CSNMP_Svc_Module {
public:
    /// Registers the module's notification handlers with the host's dispatcher, which owns them
    /// from then on. Returns true. When an allocation fails, what was registered before stays
    /// registered.
    bool init();

    std::string getMibFileName() override;
    void getSvcHandler(std::list<std::pair<const std::string, CSnmpHandler*>>& handlers) override;
};

/// The one exported function: a new module object that the caller owns, or null when it cannot be
/// initialised. What `init` throws passes to the caller, with the object destroyed.
extern "C" CSNMP_Svc_Module* SNMP_SvcModuleCreator();
