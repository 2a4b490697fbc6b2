#pragma once

#include <sys/socket.h>

#include <array>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace talvik {

/// A numeric address and a port, as the system takes them.
struct SocketAddress {
    sockaddr_storage storage{};
    socklen_t length = 0;

    /// Nothing for what is no numeric address (a zone may be part of it).
    static std::optional<SocketAddress> parse(const std::string& address, unsigned int port);

    int family() const { return storage.ss_family; }
    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }
    sockaddr* get() { return reinterpret_cast<sockaddr*>(&storage); }
};

/// Whether an error of the system (errno) is one that passes by itself: no room, route, address or
/// descriptor for the time being, or nobody who listens yet.
bool mayPass(int error);

/// Sends datagrams without ever waiting, from one socket for each family and source address.
class UdpSender {
public:
    using Time = std::chrono::steady_clock::time_point;

    UdpSender();
    ~UdpSender();

    UdpSender(const UdpSender&) = delete;
    UdpSender& operator=(const UdpSender&) = delete;

    /// Sends `message` to `to` from the address `source` (empty: the system chooses). False, with
    /// the reason in `problem`, when the system does not take it now.
    bool send(const std::string& message, const SocketAddress& to, const std::string& source,
              std::string& problem);

    /// The system's error of the last `send` that failed.
    int error() const { return error_; }

    /// The IPv4 address that datagrams to `to` leave from, as of at most a minute before `now`;
    /// 0.0.0.0 where there is none now.
    std::array<unsigned char, 4> sourceOf(const SocketAddress& to, const std::string& source,
                                          Time now);

private:
    class Socket;

    struct Route {
        std::array<unsigned char, 4> source;
        Time until;
    };

    void keepRoute(const std::pair<std::string, std::string>& way, const Route& route, Time now);

    int error_ = 0;
    std::map<std::pair<int, std::string>, std::unique_ptr<Socket>> sockets_;
    std::map<std::pair<std::string, std::string>, Route> routes_;  ///< by receiver and source
};

}  // namespace talvik
