#pragma once

#include "backend/file_descriptor.h"
#include "backend/protocol.h"

#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>

namespace talvik {

/// When a wait ends, and how long it was meant to be.
struct Deadline {
    explicit Deadline(std::chrono::milliseconds allowed)
        : limit(allowed),
          end(std::chrono::steady_clock::now() + allowed)
    {
    }

    std::chrono::milliseconds limit;
    std::chrono::steady_clock::time_point end;
};

/// Why an exchange failed; `code()` is one of `BackendLink`'s own, `what()` the end of a sentence
/// about the back end.
class LinkFailure : public std::runtime_error {
public:
    LinkFailure(int code, const std::string& reason) : std::runtime_error(reason), code_(code) {}

    int code() const { return code_; }

private:
    int code_;
};

/// One connection to a back end's socket, or none. Every wait ends at the deadline that is given.
/// Used by one thread at a time.
class SocketConnection {
public:
    /// What is known of a connection before a request is sent.
    enum class Readiness {
        Ready,
        Closed,     ///< there is none, or the peer has closed it
        OutOfStep,  ///< it holds bytes that nobody asked for, which must not be taken for the next
                    ///< answer
    };

    Readiness readiness() const;

    /// Replaces the connection by a new one. Throws `LinkFailure`; there is then none.
    void open(const std::string& path, const Deadline& deadline);

    void close() { socket_.reset(); }

    /// -1 while there is none.
    int descriptor() const { return socket_.get(); }

    /// Returns false when the peer closed the connection before it had all of `wire`. Throws
    /// `LinkFailure`.
    bool sendAll(const backend::Bytes& wire, const Deadline& deadline);

    /// One package and not a byte more. Throws `LinkFailure`, and `backend::ProtocolError` for
    /// bytes that are none.
    backend::Bytes receive(const Deadline& deadline);

private:
    std::size_t receiveSome(unsigned char* data, std::size_t size, const Deadline& deadline);
    void waitFor(short event, const Deadline& deadline, const char* what) const;

    backend::FileDescriptor socket_;
};

}  // namespace talvik
