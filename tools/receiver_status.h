#pragma once

#include <cstdint>
#include <string>

namespace talvik::ctl {

/// What the agent says of one trap receiver.
struct ReceiverStatus {
    std::uint32_t index = 0;  ///< of its row in the table of trap destinations
    std::string address;
    std::uint32_t port = 0;
    std::uint32_t version = 0;  ///< as in that table
    std::uint32_t type = 0;     ///< as in that table
    std::string user;
    bool inform = false;  ///< it acknowledges what it gets
    std::string state;    ///< for people
    std::uint64_t sent = 0;
    std::uint64_t failed = 0;
    std::uint64_t answered = 0;  ///< informs
    std::uint64_t givenUp = 0;   ///< informs
    std::uint64_t waiting = 0;
};

}  // namespace talvik::ctl
