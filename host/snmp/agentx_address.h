#pragma once

#include <sys/socket.h>

#include <optional>
#include <string>

namespace talvik {

/// Where an AgentX master listens on this machine.
struct AgentxAddress {
    /// Where the library's own `snmpd` listens unless it is told otherwise.
    static constexpr const char* kDefault = "unix:/var/agentx/master";

    std::string text;  ///< as the library takes it: "unix:/path", "tcp:127.0.0.1:705"
    sockaddr_storage socket{};
    socklen_t size = 0;
};

/// Reads "unix:/path", "/path", "tcp:127.0.0.1:705" or "tcp6:[::1]:705". Nothing for anything else,
/// and for addresses of other machines: AgentX says neither who asks nor whether it is true.
std::optional<AgentxAddress> parseAgentxAddress(const std::string& text);

/// What `parseAgentxAddress` takes, for whoever named something else.
std::string agentxAddressHint();

}  // namespace talvik
