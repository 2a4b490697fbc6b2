#pragma once

#include "backend/command_server.h"
#include "host/link/backend_link.h"

#include <cstdint>
#include <memory>
#include <mutex>

namespace talvik {

/// A back end in the host's own process. What is sent and answered goes through the same bytes as
/// over a socket, so that both behave alike.
class EmbeddedLink : public BackendLink {
public:
    /// Others may use `commands`, all of which it has by now, at the same time.
    explicit EmbeddedLink(std::shared_ptr<const backend::CommandServer> commands);

    /// A link to commands of its own.
    explicit EmbeddedLink(backend::CommandServer commands);

    int exchange(Package& request, Package& answer) override;
    std::string name() const override;

private:
    const std::shared_ptr<const backend::CommandServer> commands_;
    std::mutex mutex_;                  // held during an exchange
    std::uint32_t exchangeNumber_ = 0;  // of the latest exchange; guarded by mutex_
};

}  // namespace talvik
