#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace talvik::test {

/// What the responder does with a question.
struct DnsReply {
    enum Kind { Answer, Silence, Garbage } kind = Answer;
    unsigned code = 0;       ///< of the response: 2 is SERVFAIL, 3 NXDOMAIN, 5 REFUSED
    std::string data;        ///< of the one record: 4 or 16 bytes; empty for no record
    bool truncated = false;  ///< says so in the header
};

/// A name server on a UDP port of its own of the loopback, on a thread of its own. It answers every
/// question for a name in the same way.
class DnsResponder {
public:
    static constexpr unsigned kA = 1;
    static constexpr unsigned kAaaa = 28;

    using Rule = std::function<DnsReply(const std::string& name, unsigned type)>;

    /// On `host`, an address of the loopback, and any free port if `port` is 0.
    explicit DnsResponder(Rule rule, std::string host = "127.0.0.1", std::uint16_t port = 0)
        : rule_(std::move(rule)),
          host_(std::move(host)),
          socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)),
          stop_(::eventfd(0, EFD_CLOEXEC))
    {
        sockaddr_in own{};
        own.sin_family = AF_INET;
        own.sin_addr.s_addr = ::inet_addr(host_.c_str());
        own.sin_port = htons(port);
        socklen_t size = sizeof(own);
        auto* address = reinterpret_cast<sockaddr*>(&own);
        if (socket_ < 0 || stop_ < 0 || ::bind(socket_, address, size) != 0 ||
            ::getsockname(socket_, address, &size) != 0) {
            throw std::runtime_error("cannot make a name server for the test");
        }
        port_ = ntohs(own.sin_port);
        thread_ = std::thread([this] { serve(); });
    }

    ~DnsResponder()
    {
        ::eventfd_write(stop_, 1);
        thread_.join();
        ::close(socket_);
        ::close(stop_);
    }

    DnsResponder(const DnsResponder&) = delete;
    DnsResponder& operator=(const DnsResponder&) = delete;

    const std::string& host() const { return host_; }
    std::uint16_t port() const { return port_; }

    /// How many questions came for `name`.
    unsigned questions(const std::string& name) const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto found = questions_.find(name);
        return found == questions_.end() ? 0 : found->second;
    }

private:
    static constexpr std::size_t kHeaderSize = 12;

    void serve()
    {
        pollfd polled[] = {{socket_, POLLIN, 0}, {stop_, POLLIN, 0}};
        while (::poll(polled, 2, -1) > 0 && polled[1].revents == 0) {
            char buffer[512];
            sockaddr_in from{};
            socklen_t size = sizeof(from);
            auto* address = reinterpret_cast<sockaddr*>(&from);
            const auto got = ::recvfrom(socket_, buffer, sizeof(buffer), 0, address, &size);
            if (got < static_cast<ssize_t>(kHeaderSize)) {
                continue;
            }
            const auto reply = replyTo(std::string(buffer, static_cast<std::size_t>(got)));
            if (!reply.empty()) {
                ::sendto(socket_, reply.data(), reply.size(), 0, address, size);
            }
        }
    }

    std::string replyTo(std::string question)
    {
        std::string name;
        std::size_t at = kHeaderSize;
        while (question.at(at) != 0) {
            const std::size_t length = static_cast<unsigned char>(question.at(at));
            name += (name.empty() ? "" : ".") + question.substr(at + 1, length);
            at += length + 1;
        }
        const auto type = static_cast<unsigned char>(question.at(at + 2));
        question.resize(at + 5);  // what follows is not of the question
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            ++questions_[name];
        }
        return encode(rule_(name, type), std::move(question), type);
    }

    static std::string encode(const DnsReply& reply, std::string message, unsigned char type)
    {
        if (reply.kind == DnsReply::Silence) {
            return {};
        }
        message[2] = static_cast<char>(reply.truncated ? 0x83 : 0x81);  // response, recursion asked
        message[3] = static_cast<char>(0x80U | reply.code);             // recursion available
        message[7] = static_cast<char>(reply.data.empty() ? 0 : 1);     // answers
        message.replace(8, 4, std::string(4, '\0'));
        if (reply.kind == DnsReply::Garbage) {
            message[7] = 1;
            return message + std::string("\xc0\xff\xff\xff\x07", 5);  // a name beyond the end
        }
        if (!reply.data.empty()) {
            message += std::string("\xc0\x0c\x00", 3) + static_cast<char>(type);  // name, type
            message += std::string("\x00\x01\x00\x00\x00\x3c\x00", 7);            // IN, 60 s
            message += static_cast<char>(reply.data.size()) + reply.data;
        }
        return message;
    }

    Rule rule_;
    std::string host_;
    int socket_;
    int stop_;
    std::uint16_t port_ = 0;
    mutable std::mutex mutex_;
    std::map<std::string, unsigned> questions_;
    std::thread thread_;
};

}  // namespace talvik::test
