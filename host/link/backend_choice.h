#pragma once

#include "host/link/backend_link.h"
#include "host/platform/device_config_file.h"

#include <memory>
#include <string>

namespace talvik {

/// Which back end the host works with.
struct BackendChoice {
    bool embedded = true;
    std::string socketPath;  ///< of the back end's process, when not embedded
};

/// Reads "embedded" or "unix:PATH". Throws `StartupError` for anything else.
BackendChoice parseBackendName(const std::string& name);

/// The link to the chosen back end. An embedded one takes its commands and data from `config`;
/// throws `StartupError` when an item is missing or malformed there. A socket is first connected to
/// by the first exchange.
std::unique_ptr<BackendLink> makeBackendLink(const BackendChoice& choice,
                                             const DeviceConfigFile& config);

}  // namespace talvik
