#include "host/link/backend_choice.h"

#include "backend/system_commands.h"
#include "backend/unix_address.h"
#include "host/link/embedded_link.h"
#include "host/link/socket_link.h"
#include "host/startup_error.h"

#include <algorithm>
#include <utility>

namespace talvik {

BackendChoice parseBackendName(const std::string& name)
{
    static const std::string kScheme = "unix:";
    if (name == "embedded") {
        return {};
    }
    if (name.compare(0, kScheme.size(), kScheme) != 0) {
        throw StartupError("unknown back end \"" + name + "\": use embedded or unix:PATH");
    }
    const auto path = name.substr(kScheme.size());
    if (!backend::unixAddress(path)) {
        throw StartupError("back end \"" + name + "\": " + backend::unixAddressRefusal(path));
    }
    BackendChoice choice;
    choice.embedded = false;
    choice.socketPath = path;
    return choice;
}

std::unique_ptr<BackendLink> makeBackendLink(const BackendChoice& choice,
                                             std::shared_ptr<const backend::CommandServer> commands)
{
    if (choice.embedded) {
        return std::make_unique<EmbeddedLink>(std::move(commands));
    }
    SocketLimits limits;
    limits.exchange = choice.timeout;
    limits.connect = std::min(limits.connect, choice.timeout);
    return std::make_unique<SocketLink>(choice.socketPath, limits);
}

std::unique_ptr<BackendLink> makeBackendLink(const BackendChoice& choice,
                                             const DeviceConfigFile& config)
{
    return makeBackendLink(choice, choice.embedded ? std::make_shared<const backend::CommandServer>(
                                                         backend::makeCommandServer(config))
                                                   : nullptr);
}

}  // namespace talvik
