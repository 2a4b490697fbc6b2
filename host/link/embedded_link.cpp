#include "host/link/embedded_link.h"

#include "host/link/exchange.h"
#include "host/platform/host_log.h"

#include <utility>

namespace talvik {

EmbeddedLink::EmbeddedLink(backend::CommandServer commands) : commands_(std::move(commands)) {}

int EmbeddedLink::exchange(Package& request, Package& answer)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    try {
        auto wire = requestBytes(request, ++exchangeNumber_);
        auto reply = commands_.serve(wire);
        return takeReply(reply, exchangeNumber_, answer);
    } catch (const backend::ProtocolError& error) {
        hostLog()->warn("back end {}: {}", name(), error.what());
        return kProtocolError;
    }
}

std::string EmbeddedLink::name() const
{
    return "embedded";
}

}  // namespace talvik
