#pragma once

#include "host/snmp/trap_content.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <tuple>

namespace talvik {

/// What makes one message differ from another for the same notification: receivers for whom all of
/// this is the same get the same octets.
struct TrapMessageKind {
    unsigned int version = 2;                     ///< 1, 2 for 2c, 3
    std::string name;                             ///< community, or user of version 3
    std::array<unsigned char, 4> agentAddress{};  ///< version 1 only

    bool operator<(const TrapMessageKind& other) const
    {
        return std::tie(version, name, agentAddress) <
               std::tie(other.version, other.name, other.agentAddress);
    }
};

/// The octets of `content` as a trap. Version 3 is authenticated and encrypted by the agent's own
/// engine as a user that is in the SNMP library's list (`UsmUsers::makeReady`). Nothing, with the
/// reason in `problem`, when it cannot be encoded. On the thread of the SNMP library.
std::optional<std::string> encodeTrap(const TrapContent& content, const TrapMessageKind& kind,
                                      std::string& problem);

}  // namespace talvik
