#pragma once

#include "framework/notify_msg_handler.h"
#include "framework/snmp_handler.h"
#include "platform/svc_module.h"

#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace talvik::contract {

using HandlerList = std::list<std::pair<const std::string, CSnmpHandler*>>;

/// The built module in this process, as a stranger holds it: through dlopen and the factory alone.
/// Unloads it at the end; what the module made must be gone by then.
class LoadedModule {
public:
    /// Throws std::runtime_error when the file cannot be loaded, has no factory or makes no module.
    LoadedModule();
    ~LoadedModule();

    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    CSNMP_Svc_Module& module() { return *module_; }

    /// What the factory registered with this process's dispatcher; they go with the module.
    const std::vector<INotifyMsgHandler*>& notifyHandlers() const { return notifyHandlers_; }

    /// What dlopen gave.
    void* image() const { return image_.get(); }

    /// The file that it was loaded from.
    static std::string file();

    /// Whether this process has the module's file mapped.
    static bool isMapped();

private:
    void takeNotifyHandlers(std::size_t before);

    struct Unload {
        void operator()(void* image) const;
    };

    std::unique_ptr<void, Unload> image_;
    std::unique_ptr<CSNMP_Svc_Module> module_;
    std::vector<INotifyMsgHandler*> notifyHandlers_;
};

/// New handlers of `module`, deleted at the end as a host deletes them.
class OwnedHandlers {
public:
    explicit OwnedHandlers(CSNMP_Svc_Module& module) { module.getSvcHandler(handlers_); }
    ~OwnedHandlers();

    OwnedHandlers(const OwnedHandlers&) = delete;
    OwnedHandlers& operator=(const OwnedHandlers&) = delete;

    const HandlerList& list() const { return handlers_; }

    /// The handler of the subtree `oid`. Throws std::out_of_range when there is none.
    CSnmpHandler& at(const std::string& oid) const;

private:
    HandlerList handlers_;
};

}  // namespace talvik::contract
