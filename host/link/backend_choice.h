#pragma once

#include "backend/command_server.h"
#include "host/link/backend_link.h"
#include "host/platform/device_config_file.h"

#include <chrono>
#include <memory>
#include <string>

namespace talvik {

/// Which back end the host works with.
struct BackendChoice {
    bool embedded = true;
    std::string socketPath;                   ///< of the back end's process, when not embedded
    std::chrono::milliseconds timeout{1000};  ///< for an exchange over the socket
};

/// Reads "embedded" or "unix:PATH". Throws `StartupError` for anything else.
BackendChoice parseBackendName(const std::string& name);

/// The link to the chosen back end. An embedded one runs `commands`, which others may use at the
/// same time; it is not looked at for a socket. A socket is first connected to by the first
/// exchange.
std::unique_ptr<BackendLink>
makeBackendLink(const BackendChoice& choice,
                std::shared_ptr<const backend::CommandServer> commands);

/// As above; an embedded back end has the commands about the system only, takes what they answer
/// from `config` and keeps nothing. Throws `StartupError` when an item is missing or malformed
/// there.
std::unique_ptr<BackendLink> makeBackendLink(const BackendChoice& choice,
                                             const DeviceConfigFile& config);

}  // namespace talvik
