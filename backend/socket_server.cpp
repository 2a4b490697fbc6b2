#include "backend/socket_server.h"

#include "backend/backend_log.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <iterator>
#include <system_error>
#include <utility>

namespace talvik::backend {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kStopSlot = 0;
constexpr std::size_t kListenerSlot = 1;
constexpr std::size_t kWorkSlot = 2;
constexpr std::size_t kFirstClientSlot = 3;
constexpr int kNoFd = -1;
constexpr int kForever = -1;
constexpr std::chrono::seconds kAcceptPause{1};

/// What is known of who connected; throws `std::system_error` when the system does not tell.
ucred peerOf(int fd)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot tell who connected");
    }
    return peer;
}

/// Whether something has arrived that was not read yet.
bool hasUnread(int fd)
{
    char octet = 0;
    return ::recv(fd, &octet, sizeof octet, MSG_PEEK | MSG_DONTWAIT) > 0;
}

}  // namespace

SocketServer::SocketServer(const CommandServer& commands, const std::string& path,
                           const ServerLimits& limits, BackgroundWork* work)
    : commands_(commands),
      limits_(limits),
      work_(work),
      listener_(path)
{
}

void SocketServer::run(int stopFd)
{
    for (;;) {
        const auto before = Clock::now();
        auto fds = watched(stopFd, before);
        if (::poll(fds.data(), fds.size(), waitLimit(before)) < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw std::system_error(errno, std::generic_category(), "cannot wait for clients");
        }
        if (fds[kStopSlot].revents != 0) {
            return;
        }
        const bool woken = proceedWithWork(fds[kWorkSlot].revents != 0, Clock::now());
        serveClients(fds, woken);
        if (fds[kListenerSlot].revents != 0) {
            acceptAll(Clock::now());
        }
    }
}

std::vector<pollfd> SocketServer::watched(int stopFd, Time now) const
{
    std::vector<pollfd> fds;
    fds.reserve(kFirstClientSlot + clients_.size());
    fds.push_back({stopFd, POLLIN, 0});
    fds.push_back({now < acceptAgain_ ? kNoFd : listener_.fd(), POLLIN, 0});
    fds.push_back({work_ != nullptr ? work_->wakeFd() : kNoFd, POLLIN, 0});
    for (const auto& client : clients_) {
        fds.push_back({client.session.fd(), client.session.events(), 0});
    }
    return fds;
}

/// Milliseconds until the first deadline.
int SocketServer::waitLimit(Time now) const
{
    auto first = now < acceptAgain_ ? acceptAgain_ : Time::max();
    if (work_ != nullptr) {
        first = std::min(first, work_->deadline());
    }
    for (const auto& client : clients_) {
        first = std::min(first, client.session.deadline());
    }
    if (first == Time::max()) {
        return kForever;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(std::max(first, now) - now);
    return static_cast<int>(left.count());
}

/// Returns whether there may be something for subscribed clients.
bool SocketServer::proceedWithWork(bool woken, Time now)
{
    if (work_ == nullptr || (!woken && now < work_->deadline())) {
        return false;
    }
    try {
        work_->proceed(now);
    } catch (const std::exception& error) {
        backendLog()->error("work of the back end broke off: {}", error.what());
    }
    return true;
}

void SocketServer::serveClients(const std::vector<pollfd>& events, bool woken)
{
    const auto now = Clock::now();
    auto slot = kFirstClientSlot;
    std::list<Client> active;
    for (auto client = clients_.begin(); client != clients_.end();) {
        const bool toWake = woken && client->session.wake();
        const bool ready = events[slot++].revents != 0 || toWake;
        if (goesOn(*client, ready, now)) {
            const auto next = std::next(client);
            if (ready) {
                active.splice(active.end(), clients_, client);
            }
            client = next;
        } else {
            client = clients_.erase(client);
            refusing_ = false;
            makingRoom_ = false;
        }
    }
    clients_.splice(clients_.end(), active);
}

bool SocketServer::goesOn(Client& client, bool ready, Time now)
{
    try {
        if (ready && !client.session.proceed(now)) {
            backendLog()->debug("{} left", client.name);
            return false;
        }
        client.session.checkDeadline(now);
        return true;
    } catch (const std::exception& error) {
        backendLog()->warn("{} is disconnected: {}", client.name, error.what());
        return false;
    }
}

void SocketServer::acceptAll(Time now)
{
    for (;;) {
        FileDescriptor socket(
            ::accept4(listener_.fd(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (!socket) {
            const int error = errno;
            if (error == EINTR || error == ECONNABORTED) {
                continue;
            }
            if (error != EAGAIN && error != EWOULDBLOCK) {
                acceptAgain_ = now + kAcceptPause;
                backendLog()->warn("cannot accept a client: {}; trying again in a second",
                                   std::strerror(error));
            }
            return;
        }
        try {
            admit(std::move(socket));
        } catch (const std::exception& error) {
            backendLog()->warn("a client is refused: {}", error.what());
        }
    }
}

/// Disconnects the client that has been idle for the longest time; whoever needs its connection
/// again connects anew. Clients must not be able to keep the host out by doing nothing. Returns
/// false when none is idle.
bool SocketServer::makeRoom()
{
    const auto idle = std::find_if(clients_.begin(), clients_.end(), [](const Client& client) {
        return client.session.isIdle() && !hasUnread(client.session.fd());
    });
    if (idle == clients_.end()) {
        return false;
    }
    if (!makingRoom_) {
        backendLog()->warn("{} is disconnected: {} clients are connected, no more are allowed, and "
                           "it has been idle for the longest time; further ones are not logged "
                           "until one leaves",
                           idle->name, clients_.size());
    }
    makingRoom_ = true;
    refusing_ = false;
    clients_.erase(idle);
    return true;
}

void SocketServer::admit(FileDescriptor socket)
{
    const auto peer = peerOf(socket.get());
    if (!isTrustedPeer(peer.uid, ::geteuid())) {
        backendLog()->warn("refused process {} of user {}: only user {} and root may connect",
                           peer.pid, peer.uid, ::geteuid());
        return;
    }
    if (clients_.size() >= limits_.maxClients && !makeRoom()) {
        if (!refusing_) {
            backendLog()->warn("refused process {}: {} clients are connected, no more are allowed; "
                               "further refusals are not logged until one leaves",
                               peer.pid, clients_.size());
        }
        refusing_ = true;
        return;
    }
    const auto name =
        "client " + std::to_string(++admitted_) + " (process " + std::to_string(peer.pid) + ")";
    clients_.emplace_back(name, std::move(socket), commands_, limits_);
    backendLog()->debug("{} connected", name);
}

}  // namespace talvik::backend
