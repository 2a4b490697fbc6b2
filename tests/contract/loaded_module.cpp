#include "tests/contract/loaded_module.h"

#include "platform/notify_handler.h"

#include <dlfcn.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace talvik::contract {

void LoadedModule::Unload::operator()(void* image) const
{
    dlclose(image);
}

LoadedModule::LoadedModule() : image_(dlopen(TALVIK_MODULE_FILE, RTLD_NOW | RTLD_LOCAL))
{
    if (!image_) {
        throw std::runtime_error(dlerror());
    }
    void* const factory = dlsym(image_.get(), "SNMP_SvcModuleCreator");
    if (factory == nullptr) {
        throw std::runtime_error(dlerror());
    }
    const std::size_t before = CNotifyHandler::instance()->handlers().size();
    module_.reset(reinterpret_cast<SNMP_SvcModuleCreatorType>(factory)());
    takeNotifyHandlers(before);
    if (!module_) {
        throw std::runtime_error("the factory made no module");
    }
}

LoadedModule::~LoadedModule()
{
    for (auto* handler : notifyHandlers_) {
        CNotifyHandler::instance()->handlers().remove(handler);
        delete handler;
    }
    module_.reset();
}

void LoadedModule::takeNotifyHandlers(std::size_t before)
{
    const auto& all = CNotifyHandler::instance()->handlers();
    notifyHandlers_.assign(std::next(all.begin(), static_cast<std::ptrdiff_t>(before)), all.end());
}

std::string LoadedModule::file()
{
    return std::filesystem::canonical(TALVIK_MODULE_FILE).string();
}

bool LoadedModule::isMapped()
{
    std::ifstream maps("/proc/self/maps");
    const std::string name = file();
    for (std::string line; std::getline(maps, line);) {
        if (line.find(name) != std::string::npos) {
            return true;
        }
    }
    return false;
}

OwnedHandlers::~OwnedHandlers()
{
    for (const auto& [oid, handler] : handlers_) {
        delete handler;
    }
}

CSnmpHandler& OwnedHandlers::at(const std::string& oid) const
{
    for (const auto& [key, handler] : handlers_) {
        if (key == oid) {
            return *handler;
        }
    }
    throw std::out_of_range("no handler for " + oid);
}

}  // namespace talvik::contract
