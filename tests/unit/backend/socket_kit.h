#pragma once

#include "backend/file_descriptor.h"
#include "backend/protocol.h"
#include "backend/socket_server.h"
#include "backend/unix_address.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace talvik::test {

/// No wait of a test is longer; what it waits for has then not happened.
constexpr int kWaitMs = 20000;

/// One end of a stream in the hands of a test: what it does is done whole or throws.
class Stream {
public:
    explicit Stream(backend::FileDescriptor fd) : fd_(std::move(fd)) {}

    static Stream connectedTo(const std::string& path)
    {
        backend::FileDescriptor fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const auto address = backend::unixAddress(path).value();
        if (::connect(fd.get(), backend::asSocketAddress(address), sizeof address) != 0) {
            throw std::runtime_error("cannot connect to " + path + ": " + std::strerror(errno));
        }
        return Stream(std::move(fd));
    }

    void send(const backend::Bytes& bytes)
    {
        std::size_t done = 0;
        while (done < bytes.size()) {
            waitFor(POLLOUT);
            const auto sent =
                ::send(fd_.get(), bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
            if (sent < 0) {
                throw std::runtime_error(std::string("cannot send: ") + std::strerror(errno));
            }
            done += static_cast<std::size_t>(sent);
        }
    }

    /// Sends as much as the peer lets go through without reading; returns whether all went.
    bool trySend(const backend::Bytes& bytes)
    {
        return ::send(fd_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT) ==
               static_cast<ssize_t>(bytes.size());
    }

    /// The next `size` bytes; fewer only at the end of the stream.
    backend::Bytes receive(std::size_t size)
    {
        backend::Bytes bytes;
        std::array<unsigned char, 65536> chunk;
        while (bytes.size() < size) {
            waitFor(POLLIN);
            const auto got =
                ::recv(fd_.get(), chunk.data(), std::min(chunk.size(), size - bytes.size()), 0);
            if (got <= 0) {
                break;
            }
            bytes.insert(bytes.end(), chunk.data(), chunk.data() + got);
        }
        return bytes;
    }

    /// Waits until the peer closes, whatever it sends before.
    bool closedByPeer()
    {
        std::array<unsigned char, 65536> chunk;
        for (;;) {
            waitFor(POLLIN);
            const auto got = ::recv(fd_.get(), chunk.data(), chunk.size(), 0);
            if (got <= 0) {
                return got == 0 || errno == ECONNRESET;
            }
        }
    }

    /// Waits until the peer has hung up, reading nothing.
    void waitForHangUp() { waitFor(0); }

    void stopSending() { ::shutdown(fd_.get(), SHUT_WR); }
    void close() { fd_.reset(); }
    int fd() const { return fd_.get(); }

private:
    void waitFor(short event) const
    {
        pollfd watched{fd_.get(), event, 0};
        if (::poll(&watched, 1, kWaitMs) != 1) {
            throw std::runtime_error("nothing happened on the stream for too long");
        }
    }

    backend::FileDescriptor fd_;
};

/// A descriptor that becomes readable when told to.
class Signal {
public:
    Signal() : fd_(::eventfd(0, EFD_CLOEXEC)) {}

    void raise() const noexcept
    {
        if (::eventfd_write(fd_.get(), 1) != 0) {
            ADD_FAILURE() << "cannot raise a signal";
        }
    }

    int fd() const { return fd_.get(); }

private:
    backend::FileDescriptor fd_;
};

/// A socket server that runs on a thread of its own until the end of the scope.
class RunningServer {
public:
    RunningServer(const backend::CommandServer& commands, const std::string& path,
                  const backend::ServerLimits& limits = backend::ServerLimits())
        : server_(std::in_place, commands, path, limits),
          thread_([this] { run(); })
    {
    }

    ~RunningServer()
    {
        stop_.raise();
        thread_.join();
    }

    RunningServer(const RunningServer&) = delete;
    RunningServer& operator=(const RunningServer&) = delete;

private:
    void run()
    {
        try {
            server_->run(stop_.fd());
        } catch (const std::exception& error) {
            ADD_FAILURE() << "the server broke off: " << error.what();
        }
    }

    Signal stop_;
    std::optional<backend::SocketServer> server_;
    std::thread thread_;
};

}  // namespace talvik::test
