// A small host: loads the MIB module, asks the handler of the topology table for its row and prints
// the cells.
//
// Usage: topology-host [MODULE [DEVICE-CONFIGURATION]]. Exit status: 0 the row was printed, 1
// something failed.

#include "framework/snmp_handler.h"
#include "framework/tlv_package.h"
#include "host/sdk/reference_platform.h"
#include "host/snmp/request_context.h"
#include "platform/svc_module.h"

#include <dlfcn.h>

#include <exception>
#include <iostream>
#include <list>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

const std::string kTopology = "1.3.6.1.4.1.99999.2.91.9.1";

using Package = CTLVPackageV3<TLVMsgHeadV3>;

/// Runs `call`, which goes into the module, and answers what it answers. Whatever it throws ends
/// here, with its text copied: the exception is the module's, and its code goes when the module is
/// unloaded.
template <typename Call>
auto inModule(const std::string& name, Call&& call)
{
    std::string reason = "an exception of an unknown type";
    try {
        return call();
    } catch (const std::exception& error) {
        reason = error.what();
    } catch (...) {  // keeps its reason
    }
    throw std::runtime_error(name + " failed: " + reason);
}

/// The shared object, unloaded when this goes. Whatever the module made must be gone by then: its
/// code goes with it.
class Image {
public:
    Image(const std::string& path, talvik::ReferencePlatform& platform)
        : platform_(platform),
          handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL))
    {
        if (handle_ == nullptr) {  // the text names the file, or the symbol that this program lacks
            throw std::runtime_error(std::string("cannot load the module: ") + dlerror());
        }
    }

    ~Image()
    {
        platform_.dropNotificationHandlers();  // the module registered them when it was made
        dlclose(handle_);
    }

    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    /// What the module's one exported function makes; the host owns it.
    std::unique_ptr<CSNMP_Svc_Module> makeModule() const
    {
        void* const factory = dlsym(handle_, "SNMP_SvcModuleCreator");
        if (factory == nullptr) {
            throw std::runtime_error(std::string("this is no MIB module: ") + dlerror());
        }
        std::unique_ptr<CSNMP_Svc_Module> module(inModule(
            "SNMP_SvcModuleCreator", reinterpret_cast<SNMP_SvcModuleCreatorType>(factory)));
        if (!module) {
            throw std::runtime_error("the module could not be set up; its log lines say why");
        }
        return module;
    }

private:
    talvik::ReferencePlatform& platform_;
    void* handle_;
};

/// The handlers of a module, each with the subtree that it serves.
using Handlers = std::vector<std::pair<std::string, std::unique_ptr<CSnmpHandler>>>;

Handlers handlersOf(CSNMP_Svc_Module& module)
{
    std::list<std::pair<const std::string, CSnmpHandler*>> made;
    std::string fault;
    try {
        inModule("getSvcHandler", [&] { module.getSvcHandler(made); });
    } catch (const std::runtime_error& error) {
        fault = error.what();
    }
    Handlers handlers;  // own what the module has made, each object once, also if there is a fault
    std::set<const CSnmpHandler*> seen;
    for (const auto& [subtree, handler] : made) {
        if (handler != nullptr && seen.insert(handler).second) {
            handlers.emplace_back(subtree, handler);
        } else if (fault.empty()) {
            fault = "the module has no handler of its own for " + subtree;
        }
    }
    if (!fault.empty()) {
        throw std::runtime_error(fault);
    }
    return handlers;
}

CSnmpHandler& handlerOf(const std::string& subtree, const Handlers& handlers)
{
    for (const auto& [served, handler] : handlers) {
        if (served == subtree) {
            return *handler;
        }
    }
    throw std::runtime_error("the module serves no " + subtree);
}

/// A table's answer has one record a row, with one cell a column; the upper twelve bits of the
/// cell's tag word are the column's number.
void print(const Package& answer)
{
    std::cout << kTopology << ", " << answer.oRecords.size()
              << (answer.oRecords.size() == 1 ? " row\n" : " rows\n");
    for (const CTLVRecordV3* row : answer.oRecords) {
        for (const CTLVCell* cell : *row->pCells) {
            std::cout << "  column " << (cell->usTagWord >> 4) << ": " << cell->toString() << '\n';
        }
    }
}

void showTopology(const std::string& moduleFile, const std::string& deviceFile)
{
    // The order is that of the contract: platform, image, module, handlers, packages; they go in
    // the opposite one.
    talvik::ReferencePlatform platform({deviceFile, DATA_DIR, "", "warn"});
    const Image image(moduleFile, platform);
    const auto module = image.makeModule();
    const auto handlers = handlersOf(*module);

    CKEL_SnmpContext context;
    context.pduType = 160;  // a Get
    const Package request;  // this table is answered whole, so there is nothing to ask for
    Package answer;
    auto& handler = handlerOf(kTopology, handlers);
    const int result =
        inModule("OnQueryTable", [&] { return handler.OnQueryTable(context, request, answer); });
    if (result != 0) {
        throw std::runtime_error("the query failed with result " + std::to_string(result));
    }
    print(answer);
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        showTopology(argc > 1 ? argv[1] : MODULE_FILE,
                     argc > 2 ? argv[2] : DATA_DIR "/etc/talvik-device.xml");
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "topology-host: " << error.what() << '\n';
    }
    return 1;
}
