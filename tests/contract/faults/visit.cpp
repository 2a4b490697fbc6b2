#include "tests/contract/faults/visit.h"

#include "platform/notify_handler.h"

#include <dlfcn.h>

#include <iterator>
#include <stdexcept>

namespace talvik::contract {

void Visit::Unload::operator()(void* image) const
{
    dlclose(image);
}

Visit::Visit() : Visit(TALVIK_MODULE_FILE) {}

Visit::Visit(const std::string& path) : image_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (!image_) {
        throw std::runtime_error(dlerror());
    }
}

Visit::~Visit()
{
    for (const auto& [oid, handler] : handlers_) {
        delete handler;
    }
    for (auto* handler : registered_) {
        CNotifyHandler::instance()->handlers().remove(handler);
        delete handler;
    }
    module_.reset();
}

void Visit::makeModule()
{
    void* const symbol = dlsym(image_.get(), "SNMP_SvcModuleCreator");
    if (symbol == nullptr) {
        throw std::runtime_error(dlerror());
    }
    const auto factory = reinterpret_cast<SNMP_SvcModuleCreatorType>(symbol);
    const auto& all = CNotifyHandler::instance()->handlers();
    const auto before = all.size();
    const auto take = [&] {
        registered_.insert(registered_.end(),
                           std::next(all.begin(), static_cast<std::ptrdiff_t>(before)), all.end());
    };
    try {
        module_.reset(factory());
    } catch (...) {
        take();  // what was registered before the failure stays
        throw;
    }
    take();
}

void Visit::makeHandlers()
{
    module_->getSvcHandler(handlers_);
}

CSnmpHandler& Visit::at(const std::string& oid) const
{
    for (const auto& [key, handler] : handlers_) {
        if (key == oid) {
            return *handler;
        }
    }
    throw std::out_of_range("no handler for " + oid);
}

}  // namespace talvik::contract
