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

/// One load of the module, step by step, so that each step may fail. At the end all that was made
/// goes, as a host must see to, and the module is unloaded.
class Visit {
public:
    /// The built module, or the copy of it at `path`. Throws std::runtime_error when it cannot be
    /// loaded.
    Visit();
    explicit Visit(const std::string& path);
    ~Visit();

    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    void makeModule();
    void makeHandlers();

    /// The handler of a subtree. Throws std::out_of_range when there is none.
    CSnmpHandler& at(const std::string& oid) const;

    /// One of those that the factory has registered.
    INotifyMsgHandler& notifyHandler(std::size_t place) const { return *registered_.at(place); }

    /// What dlopen gave.
    void* image() const { return image_.get(); }

private:
    struct Unload {
        void operator()(void* image) const;
    };

    std::unique_ptr<void, Unload> image_;
    std::unique_ptr<CSNMP_Svc_Module> module_;
    std::list<std::pair<const std::string, CSnmpHandler*>> handlers_;
    std::vector<INotifyMsgHandler*> registered_;
};

}  // namespace talvik::contract
