#pragma once

#include "platform/svc_module.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace talvik {

/// A MIB module's shared object, loaded, with the module object that its factory made. Handlers and
/// everything else that the module made must be gone before this object is.
class LoadedModule {
public:
    /// A subtree's OID as the module wrote it, and the handler.
    using Handlers = std::vector<std::pair<std::string, std::unique_ptr<CSnmpHandler>>>;

    /// Loads `path`. Throws `StartupError` that names the file and the reason when it is missing,
    /// no shared object of this machine's kind, lacks a symbol or the factory, or when the factory
    /// fails.
    explicit LoadedModule(const std::string& path);

    /// Deletes the module object, then unloads the shared object.
    ~LoadedModule();

    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    /// The module's MIB description file, a plain file name. Throws `StartupError`.
    std::string mibFileName() const;

    /// New handlers for all subtrees of the module. Throws `StartupError` when the module fails, or
    /// hands over no handler, a null one, one twice or two for one OID.
    Handlers makeHandlers() const;

    const std::string& path() const { return path_; }

private:
    struct Unload {
        void operator()(void* image) const;
    };

    [[noreturn]] void refuse(const std::string& reason) const;

    std::string path_;
    std::unique_ptr<void, Unload> image_;
    std::unique_ptr<CSNMP_Svc_Module> module_;
};

}  // namespace talvik
