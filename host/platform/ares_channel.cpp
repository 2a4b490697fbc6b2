#include "host/platform/ares_channel.h"

#include "host/platform/host_log.h"

#include <ares.h>
#include <netdb.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <exception>
#include <memory>
#include <stdexcept>
#include <utility>

namespace talvik {

namespace {

using Milliseconds = std::chrono::milliseconds;

void require(int status, const char* what)
{
    if (status != ARES_SUCCESS) {
        throw std::runtime_error(std::string("cannot ") + what + ": " + ares_strerror(status));
    }
}

std::vector<std::string> addressesIn(const ares_addrinfo& result)
{
    std::vector<std::string> addresses;
    for (const auto* node = result.nodes; node != nullptr; node = node->ai_next) {
        std::array<char, NI_MAXHOST> text{};
        if (::getnameinfo(node->ai_addr, node->ai_addrlen, text.data(), text.size(), nullptr, 0,
                          NI_NUMERICHOST) == 0) {
            addresses.emplace_back(text.data());
        }
    }
    return addresses;
}

bool meansNoSuchName(int status)
{
    return status == ARES_ENOTFOUND || status == ARES_ENODATA || status == ARES_ENONAME ||
           status == ARES_EBADNAME;
}

struct FreeResult {
    void operator()(ares_addrinfo* result) const { ares_freeaddrinfo(result); }
};

using Result = std::unique_ptr<ares_addrinfo, FreeResult>;

LookupAnswer readAnswer(int status, const ares_addrinfo* result)
{
    LookupAnswer answer;
    if (status == ARES_SUCCESS && result != nullptr) {
        answer.addresses = addressesIn(*result);
    }
    if (!answer.addresses.empty()) {
        answer.outcome = LookupOutcome::Found;
        return answer;
    }
    const bool none = status == ARES_SUCCESS || meansNoSuchName(status);
    answer.outcome = none ? LookupOutcome::NoSuchName : LookupOutcome::NoAnswer;
    answer.reason = status == ARES_SUCCESS ? "no address" : ares_strerror(status);
    return answer;
}

/// An answer in any case, as whoever asked waits for one.
LookupAnswer answerOf(int status, const ares_addrinfo* result)
{
    try {
        return readAnswer(status, result);
    } catch (const std::exception& error) {
        hostLog()->error("cannot read the answer of a name server: {}", error.what());
        return {};
    }
}

}  // namespace

/// A look-up under way. c-ares owns it from `ask` to `onAnswer`.
struct AresChannel::Request {
    AresChannel& channel;
    std::string name;
    NameLookup::Done done;
    int family = AF_UNSPEC;  ///< that is asked for
};

AresChannel::AresChannel(const AresSettings& settings)
{
    static const int libraryStatus = ares_library_init(ARES_LIB_INIT_ALL);
    require(libraryStatus, "set up the look-up of names");

    ares_options options{};
    options.timeout = static_cast<int>(settings.timeout.count());
    options.tries = settings.tries;
    options.sock_state_cb = &AresChannel::onSocket;
    options.sock_state_cb_data = this;
    std::string lookups = "fb";  // /etc/hosts, then DNS
    options.lookups = lookups.data();
    auto resolvConf = settings.resolvConf;
    options.resolvconf_path = resolvConf.data();
    options.udp_port = settings.port;
    options.tcp_port = settings.port;
    constexpr int kMask = ARES_OPT_TIMEOUTMS | ARES_OPT_TRIES | ARES_OPT_SOCK_STATE_CB |
                          ARES_OPT_LOOKUPS | ARES_OPT_RESOLVCONF | ARES_OPT_UDP_PORT |
                          ARES_OPT_TCP_PORT;
    require(ares_init_options(&channel_, &options, kMask), "read the settings of the name servers");
}

AresChannel::~AresChannel()
{
    ares_destroy(channel_);
}

void AresChannel::start(const std::string& name, NameLookup::Done done)
{
    auto request = std::make_unique<Request>(Request{*this, name, std::move(done)});
    ++underWay_;
    ask(std::move(request));
}

void AresChannel::ask(std::unique_ptr<Request> request)
{
    ares_addrinfo_hints hints{};
    hints.ai_family = request->family;
    hints.ai_socktype = SOCK_DGRAM;
    const auto& name = request->name;
    ares_getaddrinfo(channel_, name.c_str(), nullptr, &hints, &AresChannel::onAnswer,
                     request.release());
}

void AresChannel::onAnswer(void* request, int status, int /*timeouts*/,
                           ares_addrinfo* result) noexcept
{
    const Result owned(result);
    std::unique_ptr<Request> ended(static_cast<Request*>(request));
    auto& self = ended->channel;
    try {
        if (status != ARES_EDESTRUCTION && status != ARES_ECANCELLED) {
            const auto answer = answerOf(status, result);
            if (answer.outcome == LookupOutcome::NoSuchName && ended->family != AF_INET6) {
                // For both families c-ares tells how the one that came last ended, even if a
                // server failed for the other. So each has to say it for itself.
                ended->family = ended->family == AF_UNSPEC ? AF_INET : AF_INET6;
                self.ask(std::move(ended));
                return;
            }
            ended->done(answer);
        }
    } catch (const std::exception& error) {
        hostLog()->error("cannot take the answer of a name server: {}", error.what());
    }
    --self.underWay_;
}

void AresChannel::onSocket(void* self, int socket, int readable, int writable) noexcept
{
    auto& sockets = static_cast<AresChannel*>(self)->sockets_;
    const int events = (readable != 0 ? POLLIN : 0) | (writable != 0 ? POLLOUT : 0);
    try {
        if (events == 0) {
            sockets.erase(socket);
        } else {
            sockets[socket] = static_cast<short>(events);
        }
    } catch (const std::exception& error) {
        // The look-ups that use the socket end when their time is over.
        hostLog()->error("cannot watch the socket of a name server: {}", error.what());
    }
}

void AresChannel::appendSockets(std::vector<pollfd>& polled) const
{
    for (const auto& [socket, events] : sockets_) {
        polled.push_back({socket, events, 0});
    }
}

Milliseconds AresChannel::timeout(Milliseconds atMost) const
{
    timeval left{};
    if (ares_timeout(channel_, nullptr, &left) == nullptr) {
        return atMost;
    }
    const auto exact = std::chrono::seconds(left.tv_sec) + std::chrono::microseconds(left.tv_usec);
    return std::min(atMost, std::chrono::ceil<Milliseconds>(exact));
}

void AresChannel::process(const std::vector<pollfd>& polled)
{
    for (const auto& [socket, events, found] : polled) {
        // An answer may have closed the socket, and its number may be another's by now.
        if (found != 0 && sockets_.count(socket) != 0) {
            const bool failed = (found & (POLLERR | POLLHUP | POLLNVAL)) != 0;
            const bool readable = failed || (found & POLLIN) != 0;
            const bool writable = (found & POLLOUT) != 0 || (failed && (events & POLLOUT) != 0);
            ares_process_fd(channel_, readable ? socket : ARES_SOCKET_BAD,
                            writable ? socket : ARES_SOCKET_BAD);
        }
    }
    ares_process_fd(channel_, ARES_SOCKET_BAD, ARES_SOCKET_BAD);
}

}  // namespace talvik
