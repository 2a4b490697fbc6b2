// A host that defines every platform symbol itself and takes only the shared classes from what is
// installed: loads the module, and prints the subtrees and the rows of the topology table.

#include "framework/snmp_handler.h"
#include "framework/tlv_package.h"
#include "platform/notify_handler.h"
#include "platform/svc_module.h"
#include "tests/support/request_context.h"

#include <dlfcn.h>

#include <iostream>
#include <list>
#include <string>
#include <utility>

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;

int show(void* image)
{
    void* const factory = dlsym(image, "SNMP_SvcModuleCreator");
    if (factory == nullptr) {
        std::cerr << dlerror() << '\n';
        return 1;
    }
    CSNMP_Svc_Module* const module = reinterpret_cast<SNMP_SvcModuleCreatorType>(factory)();
    std::list<std::pair<const std::string, CSnmpHandler*>> handlers;
    module->getSvcHandler(handlers);
    for (const auto& [subtree, handler] : handlers) {
        std::cout << subtree << '\n';
    }

    Package answer;
    const int result = handlers.front().second->OnQueryTable(CKEL_SnmpContext(), Package(), answer);
    std::cout << "result " << result << ", rows " << answer.oRecords.size() << '\n';
    // The process ends with the module loaded and nothing of it deleted, which a host may do.
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    void* const image = dlopen(argc > 1 ? argv[1] : "", RTLD_NOW | RTLD_LOCAL);
    if (image == nullptr) {
        std::cerr << dlerror() << '\n';
        return 1;
    }
    return show(image);
}
