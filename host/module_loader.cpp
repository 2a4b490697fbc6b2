#include "host/module_loader.h"

#include "framework/snmp_handler.h"
#include "host/module_file.h"
#include "host/platform/notification_handlers.h"
#include "host/snmp/handler_boundary.h"
#include "host/startup_error.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <list>
#include <optional>
#include <set>

namespace talvik {

namespace {

constexpr const char* kFactory = "SNMP_SvcModuleCreator";

std::string loaderError()
{
    const char* text = dlerror();
    return text == nullptr ? "unknown reason" : text;
}

using MadeHandlers = std::list<std::pair<const std::string, CSnmpHandler*>>;

/// Takes over what a module has handed out, each object once, whatever is wrong with it. `shared`
/// gets the OIDs of an object that stands under two.
LoadedModule::Handlers takeOver(const MadeHandlers& made, std::optional<std::string>& shared)
{
    LoadedModule::Handlers handlers;
    for (const auto& [id, handler] : made) {
        const CSnmpHandler* const object = handler;
        const auto owner = std::find_if(handlers.begin(), handlers.end(), [&](const auto& owned) {
            return object != nullptr && owned.second.get() == object;
        });
        if (owner == handlers.end()) {
            handlers.emplace_back(id, std::unique_ptr<CSnmpHandler>(handler));
        } else {
            shared = owner->first + " and " + id;
        }
    }
    return handlers;
}

}  // namespace

void LoadedModule::Unload::operator()(void* image) const
{
    // What the module registered is code of the image.
    dropNotificationHandlers();
    dlclose(image);
}

void LoadedModule::refuse(const std::string& reason) const
{
    throw StartupError("module " + path_ + ": " + reason);
}

LoadedModule::LoadedModule(const std::string& path)
    : path_(std::filesystem::absolute(path).string())
{
    if (const auto fault = faultOfModuleFile(path_)) {
        refuse(*fault);
    }
    // All symbols now, so that a missing one is found here and not in the middle of a request.
    image_.reset(dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!image_) {
        refuse("cannot be loaded: " + loaderError() +
               " (it needs a library that is not installed, or something that this agent does not "
               "have: install both of one release)");
    }
    void* const symbol = dlsym(image_.get(), kFactory);
    if (symbol == nullptr) {
        refuse(std::string("is no MIB module, it exports no ") + kFactory +
               "; name the module's file with --module");
    }
    const auto factory = reinterpret_cast<SNMP_SvcModuleCreatorType>(symbol);
    const auto failure = callHandler([&] { module_.reset(factory()); });
    if (failure) {
        refuse(std::string(kFactory) + " failed: " + *failure);
    }
    if (!module_) {
        refuse(std::string(kFactory) + " made no module; the log may say why");
    }
}

LoadedModule::~LoadedModule()
{
    module_.reset();
}

std::string LoadedModule::mibFileName() const
{
    std::string name;
    const auto failure = callHandler([&] { name = module_->getMibFileName(); });
    if (failure) {
        refuse("getMibFileName failed: " + *failure);
    }
    if (name.empty() || name.find('/') != std::string::npos) {
        refuse("its MIB description \"" + name + "\" is no plain file name");
    }
    return name;
}

LoadedModule::Handlers LoadedModule::makeHandlers() const
{
    MadeHandlers made;
    const auto failure = callHandler([&] { module_->getSvcHandler(made); });
    std::optional<std::string> shared;
    Handlers handlers = takeOver(made, shared);
    if (failure) {
        refuse("getSvcHandler failed: " + *failure);
    }
    if (shared) {
        refuse("has one handler object for " + *shared + "; each takes one of its own");
    }
    if (handlers.empty()) {
        refuse("serves no subtree");
    }
    std::set<std::string> ids;
    for (const auto& [id, handler] : handlers) {
        if (handler == nullptr) {
            refuse("has no handler for " + id);
        }
        if (!ids.insert(id).second) {
            refuse("has two handlers for " + id);
        }
    }
    return handlers;
}

}  // namespace talvik
