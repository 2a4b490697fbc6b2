#include "host/snmp/udp_sender.h"

#include <netdb.h>
#include <netinet/in.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

namespace talvik {

namespace {

constexpr auto kRouteLifetime = std::chrono::minutes(1);
constexpr std::size_t kMaxRoutes = 8192;  // twice the rows of the trap destination table
constexpr int kSendBuffer = 1 << 20;

}  // namespace

std::optional<SocketAddress> SocketAddress::parse(const std::string& address, unsigned int port)
{
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
        return std::nullopt;
    }
    SocketAddress result;
    std::memcpy(&result.storage, found->ai_addr, found->ai_addrlen);
    result.length = found->ai_addrlen;
    freeaddrinfo(found);
    return result;
}

bool mayPass(int error)
{
    constexpr int kPassing[] = {EAGAIN,       EWOULDBLOCK,   ENOBUFS,     ENOMEM,       EMFILE,
                                ENFILE,       ENETDOWN,      ENETUNREACH, EHOSTUNREACH, EHOSTDOWN,
                                ECONNREFUSED, EADDRNOTAVAIL, EINTR};
    return std::find(std::begin(kPassing), std::end(kPassing), error) != std::end(kPassing);
}

/// A datagram socket that never waits; `fd` is -1 with the reason in `problem` and `error` if there
/// is none.
class UdpSender::Socket {
public:
    Socket(int family, const std::string& source)
        : fd(socket(family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
    {
        if (fd < 0) {
            error = errno;
            problem = std::strerror(error);
            return;
        }
        // Nothing is ever read from it; both are wishes only.
        const int least = 1;
        setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &least, sizeof(least));
        setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof(kSendBuffer));
        if (!source.empty()) {
            bindTo(family, source);
        }
    }

    ~Socket() { closeNow(); }

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    int fd;
    int error = 0;
    std::string problem;

private:
    void bindTo(int family, const std::string& source)
    {
        const auto address = SocketAddress::parse(source, 0);
        if (!address || address->family() != family) {
            problem = "the source address " + source + " is of the other IP version";
        } else if (bind(fd, address->get(), address->length) != 0) {
            error = errno;
            problem = "the source address " + source + " cannot be used: " + std::strerror(error);
        }
        if (!problem.empty()) {
            closeNow();
        }
    }

    void closeNow()
    {
        if (fd >= 0) {
            close(fd);
        }
        fd = -1;
    }
};

UdpSender::UdpSender() = default;
UdpSender::~UdpSender() = default;

bool UdpSender::send(const std::string& message, const SocketAddress& to, const std::string& source,
                     std::string& problem)
{
    auto& socket = sockets_[{to.family(), source}];
    if (!socket) {
        socket = std::make_unique<Socket>(to.family(), source);
    }
    if (socket->fd < 0) {
        problem = socket->problem;
        error_ = socket->error;
        socket.reset();  // the address may be there the next time
        return false;
    }
    if (sendto(socket->fd, message.data(), message.size(), MSG_NOSIGNAL, to.get(), to.length) < 0) {
        error_ = errno;
        problem = std::strerror(error_);
        return false;
    }
    return true;
}

std::array<unsigned char, 4> UdpSender::sourceOf(const SocketAddress& to, const std::string& source,
                                                 Time now)
{
    std::array<unsigned char, 4> octets{};
    if (to.family() != AF_INET) {
        return octets;
    }
    const std::string receiver(reinterpret_cast<const char*>(to.get()), to.length);
    const auto known = routes_.find({receiver, source});
    if (known != routes_.end() && now < known->second.until) {
        return known->second.source;
    }
    const Socket probe(AF_INET, source);
    SocketAddress local;
    local.length = sizeof(local.storage);
    if (probe.fd >= 0 && connect(probe.fd, to.get(), to.length) == 0 &&
        getsockname(probe.fd, local.get(), &local.length) == 0) {
        const auto& ipv4 = reinterpret_cast<const sockaddr_in&>(local.storage);
        std::memcpy(octets.data(), &ipv4.sin_addr, octets.size());
        keepRoute({receiver, source}, {octets, now + kRouteLifetime}, now);
    }
    return octets;
}

/// One for which there is no room is found out anew each time.
void UdpSender::keepRoute(const std::pair<std::string, std::string>& way, const Route& route,
                          Time now)
{
    if (routes_.size() >= kMaxRoutes) {
        for (auto known = routes_.begin(); known != routes_.end();) {
            known = known->second.until <= now ? routes_.erase(known) : std::next(known);
        }
    }
    if (routes_.size() < kMaxRoutes || routes_.count(way) != 0) {
        routes_[way] = route;
    }
}

}  // namespace talvik
