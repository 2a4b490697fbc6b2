#pragma once

#include <cstddef>
#include <string>

/// One trap destination: a manager that receives this system's traps. A plain value; host and
/// module share its layout.
struct tTrapDestInfo {
    std::string index;         ///< names the row in the host's list; empty until the host gave one
    std::string address;       ///< IPv4 or IPv6 address, or a domain name
    unsigned int port = 0;     ///< UDP port
    unsigned int version = 2;  ///< trap version code
    unsigned int type = 3;     ///< trap type code
    std::string user = "--";   ///< user name; "--" stands for none
};

static_assert(offsetof(tTrapDestInfo, index) == 0 &&
                  offsetof(tTrapDestInfo, address) == sizeof(std::string) &&
                  offsetof(tTrapDestInfo, port) == 2 * sizeof(std::string) &&
                  offsetof(tTrapDestInfo, version) == offsetof(tTrapDestInfo, port) + 4 &&
                  offsetof(tTrapDestInfo, type) == offsetof(tTrapDestInfo, port) + 8 &&
                  offsetof(tTrapDestInfo, user) == offsetof(tTrapDestInfo, port) + 16 &&
                  sizeof(tTrapDestInfo) == 3 * sizeof(std::string) + 16,
              "trap destinations are shared with the host");
