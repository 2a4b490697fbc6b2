#include "host/served_module.h"

#include "host/platform/host_log.h"
#include "host/snmp/agent.h"
#include "host/snmp/batch_subtree.h"
#include "host/snmp/handler_boundary.h"
#include "host/snmp/scalar_subtree.h"
#include "host/snmp/table_subtree.h"
#include "host/startup_error.h"
#include "host/table_keeper.h"
#include "platform/notify_handler.h"

#include <cstddef>
#include <filesystem>
#include <utility>

namespace talvik {

ServedModule::ServedModule(const std::string& moduleFile, const std::string& mibDir)
    : module_(moduleFile),
      mib_(MibDescription::load((std::filesystem::path(mibDir) / module_.mibFileName()).string()))
{
    for (auto& [id, handler] : module_.makeHandlers()) {
        parts_.push_back(described(id, std::move(handler)));
        hostLog()->debug("module {} serves {}", module_.path(), id);
    }
    hostLog()->info("module {} loaded: {} subtrees, {} notification handlers, described by {}",
                    module_.path(), parts_.size(), CNotifyHandler::instance()->handlers().size(),
                    mib_.path());
}

ServedModule::Part ServedModule::described(const std::string& id,
                                           std::unique_ptr<CSnmpHandler> handler) const
{
    const auto oid = parseObjectId(id);
    Part part{oid ? mib_.table(*oid) : nullptr, oid ? mib_.scalar(*oid) : nullptr,
              std::move(handler)};
    if (part.table == nullptr && part.scalar == nullptr) {
        throw StartupError("module " + module_.path() + " serves " + id + ", but " + mib_.path() +
                           " describes no table or scalar there");
    }
    return part;
}

void ServedModule::serve(SnmpAgent& agent, TableKeeper& keeper, BatchTable::Limits limits)
{
    std::vector<std::unique_ptr<Subtree>> subtrees;
    Batches batches;
    for (auto& part : parts_) {
        if (part.table != nullptr) {
            subtrees.push_back(tableSubtree(*part.table, std::move(part.handler), limits, batches));
        } else {
            // What was written may change what tables show, before the back end reports it.
            subtrees.push_back(std::make_unique<ScalarSubtree>(
                std::make_unique<ScalarSource>(*part.scalar, std::move(part.handler)),
                [&keeper] { keeper.dropRows(); }));
        }
    }
    parts_.clear();
    agent.serve(std::move(subtrees));
    for (auto& table : batches) {
        keeper.add(std::move(table));
    }
}

std::unique_ptr<Subtree> ServedModule::tableSubtree(const MibTable& table,
                                                    std::unique_ptr<CSnmpHandler> handler,
                                                    BatchTable::Limits limits,
                                                    Batches& batches) const
{
    bool inBatches = false;
    const auto failure = callHandler([&] { inBatches = !handler->isWholeTable(); });
    if (failure || !inBatches) {  // the source reports the failure
        return std::make_unique<TableSubtree>(
            std::make_unique<TableSource>(table, std::move(handler)));
    }
    const ObjectId below(table.id.begin() + static_cast<std::ptrdiff_t>(mib_.root().size()),
                         table.id.end());
    batches.push_back(std::make_shared<BatchTable>(table, below, std::move(handler), limits));
    return std::make_unique<BatchSubtree>(batches.back());
}

}  // namespace talvik
