#include "host/link/embedded_link.h"

#include "host/link/exchange.h"
#include "host/platform/host_log.h"

#include <utility>

namespace talvik {

EmbeddedLink::EmbeddedLink(std::shared_ptr<const backend::CommandServer> commands)
    : commands_(std::move(commands))
{
}

EmbeddedLink::EmbeddedLink(backend::CommandServer commands)
    : EmbeddedLink(std::make_shared<const backend::CommandServer>(std::move(commands)))
{
}

int EmbeddedLink::exchange(Package& request, Package& answer)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    int ifRefused = kProtocolError;
    try {
        auto wire = requestBytes(request, ++exchangeNumber_);
        ifRefused = kUnreachable;  // as over a socket, where the back end closes the connection
        auto reply = commands_->serve(wire);
        ifRefused = kProtocolError;
        return takeReply(reply, exchangeNumber_, answer);
    } catch (const backend::ProtocolError& error) {
        hostLog()->warn("an exchange with the embedded back end failed: {}", error.what());
        return ifRefused;
    }
}

std::string EmbeddedLink::name() const
{
    return "embedded";
}

}  // namespace talvik
