#pragma once

#include "framework/snmp_handler.h"
#include "host/module_loader.h"
#include "host/snmp/batch_table.h"
#include "host/snmp/mib_description.h"
#include "host/snmp/subtree.h"

#include <list>
#include <memory>
#include <string>
#include <vector>

namespace talvik {

class SnmpAgent;
class TableKeeper;

/// The module with its MIB description and its handlers, ready to be served.
class ServedModule {
public:
    /// Loads the module and, from `mibDir`, its MIB description, and has the handlers made. Throws
    /// `StartupError` when any of it cannot be used; nothing of the module is left then.
    ServedModule(const std::string& moduleFile, const std::string& mibDir);

    /// Hands the handlers over to `agent` and `keeper`, which must be gone before this object is.
    /// Throws `StartupError` with nothing served when an OID is taken.
    void serve(SnmpAgent& agent, TableKeeper& keeper, BatchTable::Limits limits);

    const MibDescription& mib() const { return mib_; }

    /// What was loaded.
    std::list<std::string> files() const { return {module_.path(), mib_.path()}; }

private:
    using Batches = std::vector<std::shared_ptr<BatchTable>>;

    /// A handler and what `mib_` says of its subtree: one of the two.
    struct Part {
        const MibTable* table;
        const MibScalar* scalar;
        std::unique_ptr<CSnmpHandler> handler;
    };

    Part described(const std::string& id, std::unique_ptr<CSnmpHandler> handler) const;
    std::unique_ptr<Subtree> tableSubtree(const MibTable& table,
                                          std::unique_ptr<CSnmpHandler> handler,
                                          BatchTable::Limits limits, Batches& batches) const;

    LoadedModule module_;
    MibDescription mib_;
    std::vector<Part> parts_;
};

}  // namespace talvik
