#pragma once

#include "host/snmp/udp_sender.h"

#include <optional>
#include <string>

namespace talvik {

class NameCache;

/// Where a receiver is: its numeric address, or what its name stands for. Of several addresses it
/// is the first, and that stays while it is one of them, since name servers turn their lists. While
/// the name does not resolve, the last address that it had stays.
class ReceiverAddress {
public:
    /// `names` outlives it; null if names do not resolve.
    ReceiverAddress(std::string address, unsigned int port, NameCache* names);
    ~ReceiverAddress();

    ReceiverAddress(const ReceiverAddress&) = delete;
    ReceiverAddress& operator=(const ReceiverAddress&) = delete;

    /// Asks for the name once more, without waiting. True if the address is another one now.
    bool update();

    bool known() const { return to_.has_value(); }
    const SocketAddress& to() const { return *to_; }  ///< if `known`
    const std::string& numeric() const { return numeric_; }

    /// Why it is not known.
    std::string problem() const;

    /// The name does not resolve, and the address is the last one that it had.
    bool isStale() const { return stale_; }

private:
    void use(const std::string& numeric);

    std::string address_;
    unsigned int port_;
    NameCache* names_;
    bool isName_;
    bool stale_ = false;
    std::string numeric_;
    std::optional<SocketAddress> to_;
};

}  // namespace talvik
