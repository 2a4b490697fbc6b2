#pragma once

#include "host/snmp/udp_sender.h"

// After the above: net-snmp's headers leave names behind.
#include "host/snmp/net_snmp.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/select.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace talvik::test {

/// The SNMP library with an engine ID, without any file, once a process.
class SnmpEngine : public testing::Environment {
public:
    void SetUp() override
    {
        setenv("MIBS", "", 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
        const unsigned char id[] = {0x80, 0x01, 0x86, 0x9F, 5, 1, 2, 3, 4, 5, 6, 7, 8};
        set_exact_engineID(id, sizeof(id));
        init_snmp("talvik-unit-test");
    }
};

inline const auto* const kSnmpEngine = testing::AddGlobalTestEnvironment(new SnmpEngine);

constexpr auto kLimit = std::chrono::seconds(20);

/// A socket on loopback that takes what the code under test sends.
class UdpReceiver {
public:
    explicit UdpReceiver(const std::string& address = "127.0.0.1") : address_(address)
    {
        const auto any = SocketAddress::parse(address, 0);
        fd_ = socket(any->family(), SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (fd_ < 0 || bind(fd_, any->get(), any->length) != 0) {
            throw std::runtime_error("no socket at " + address);
        }
        SocketAddress own;
        own.length = sizeof(own.storage);
        getsockname(fd_, own.get(), &own.length);
        port_ = ntohs(reinterpret_cast<const sockaddr_in&>(own.storage).sin_port);
    }

    ~UdpReceiver() { close(fd_); }

    UdpReceiver(const UdpReceiver&) = delete;
    UdpReceiver& operator=(const UdpReceiver&) = delete;

    unsigned int port() const { return port_; }
    const std::string& address() const { return address_; }

    bool hasSomething() const
    {
        pollfd waiting{fd_, POLLIN, 0};
        return poll(&waiting, 1, 0) == 1;
    }

    /// The next datagram; an empty one if none comes within the limit.
    std::string receive()
    {
        pollfd waiting{fd_, POLLIN, 0};
        char buffer[65536];
        sender_.length = sizeof(sender_.storage);
        if (poll(&waiting, 1, static_cast<int>(std::chrono::milliseconds(kLimit).count())) != 1) {
            return "";
        }
        const auto got = recvfrom(fd_, buffer, sizeof(buffer), 0, sender_.get(), &sender_.length);
        return got < 0 ? "" : std::string(buffer, static_cast<std::size_t>(got));
    }

    /// To where the last datagram came from.
    void answer(const std::string& message)
    {
        if (sendto(fd_, message.data(), message.size(), 0, sender_.get(), sender_.length) < 0) {
            throw std::runtime_error("the answer cannot be sent");
        }
    }

    const SocketAddress& sender() const { return sender_; }

private:
    std::string address_;
    int fd_ = -1;
    unsigned int port_ = 0;
    SocketAddress sender_;
};

struct ParsedRelease {
    void operator()(netsnmp_pdu* pdu) const { snmp_free_pdu(pdu); }
};

using ParsedPdu = std::unique_ptr<netsnmp_pdu, ParsedRelease>;

/// The library's own view of a message, decrypted if it knows the user. Null if it refuses it.
inline ParsedPdu parseMessage(const std::string& message)
{
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = SNMP_DEFAULT_VERSION;
    ParsedPdu pdu(static_cast<netsnmp_pdu*>(std::calloc(1, sizeof(netsnmp_pdu))));
    auto octets = message;
    if (snmp_parse(nullptr, &session, pdu.get(), reinterpret_cast<u_char*>(octets.data()),
                   octets.size()) != 0) {
        return nullptr;
    }
    return pdu;
}

/// Serves the SNMP library's sessions once, for at most 20 ms.
inline void serveOnce()
{
    netsnmp_large_fd_set ready;
    netsnmp_large_fd_set_init(&ready, FD_SETSIZE);
    int count = 0;
    int block = 0;
    timeval timeout{0, 20000};
    snmp_select_info2(&count, &ready, &timeout, &block);
    if (netsnmp_large_fd_set_select(count, &ready, nullptr, nullptr, &timeout) > 0) {
        snmp_read2(&ready);
    }
    snmp_timeout();
    netsnmp_large_fd_set_cleanup(&ready);
}

/// Serves the library and `work` until `condition` holds; false if it does not within the limit.
template <typename Work, typename Condition>
bool serveUntil(Work&& work, Condition&& condition)
{
    const auto end = std::chrono::steady_clock::now() + kLimit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        serveOnce();
        work();
    }
    return true;
}

}  // namespace talvik::test
