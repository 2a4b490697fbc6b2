#pragma once

#include "tools/failure.h"

#include <cstdint>
#include <string>

namespace talvik::ctl {

/// Whom a request goes to.
enum class Peer {
    BackEnd,  ///< commands about alarms
    Agent,    ///< commands about receivers
};

/// A request that was not carried out.
struct RefusedRequest {
    Peer peer = Peer::BackEnd;
    std::string task;                    ///< for people: "clear alarm 7"
    std::string command;                 ///< its name in the device configuration: "CLEAR_ALARM"
    std::uint64_t number = 0;            ///< its number there
    std::string socket;                  ///< the path
    std::string device;                  ///< the device configuration that the number is from
    int code = 0;                        ///< what the link or the peer answered
    bool changes = true;                 ///< false when it only asks
    std::string connectionFailure = {};  ///< the link's own reason, if `code` is the link's
};

/// Why `request` was not carried out and what to do, for every code.
Failure refusalOf(const RefusedRequest& request);

}  // namespace talvik::ctl
