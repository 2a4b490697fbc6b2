#pragma once

#include "host/platform/name_lookup.h"

#include <poll.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct ares_channeldata;
struct ares_addrinfo;

namespace talvik {

struct AresSettings {
    /// For each try; c-ares doubles it from one round of the servers to the next.
    std::chrono::milliseconds timeout = std::chrono::seconds(2);
    int tries = 2;  ///< of each server
    /// How long look-ups may begin on a channel.
    std::chrono::milliseconds channelAge = std::chrono::seconds(30);
    std::string resolvConf = "/etc/resolv.conf";
    std::uint16_t port = 53;  ///< of the servers that it names
};

/// One c-ares channel. Used by one thread.
class AresChannel {
public:
    /// Throws `std::runtime_error`.
    explicit AresChannel(const AresSettings& settings);

    /// Ends the look-ups under way; nobody is told.
    ~AresChannel();

    AresChannel(const AresChannel&) = delete;
    AresChannel& operator=(const AresChannel&) = delete;

    /// `done` may be called before this returns.
    void start(const std::string& name, NameLookup::Done done);

    /// Look-ups that have not ended.
    std::size_t underWay() const { return underWay_; }

    /// Adds what to watch.
    void appendSockets(std::vector<pollfd>& polled) const;

    /// How long to watch: `atMost`, or less.
    std::chrono::milliseconds timeout(std::chrono::milliseconds atMost) const;

    /// Serves what `polled` says of sockets of this channel, and then what takes too long.
    void process(const std::vector<pollfd>& polled);

private:
    struct Request;

    static void onSocket(void* self, int socket, int readable, int writable) noexcept;
    static void onAnswer(void* request, int status, int timeouts, ares_addrinfo* result) noexcept;

    void ask(std::unique_ptr<Request> request);

    ares_channeldata* channel_ = nullptr;
    std::map<int, short> sockets_;  ///< what poll should wait for
    std::size_t underWay_ = 0;
};

}  // namespace talvik
