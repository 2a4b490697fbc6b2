#pragma once

#include "backend/command_server.h"
#include "backend/connection.h"
#include "backend/file_descriptor.h"
#include "backend/notification_stream.h"
#include "backend/package_assembler.h"

#include <sys/types.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>

namespace talvik::backend {

/// What one client may take of the server.
struct ServerLimits {
    std::size_t maxClients = 16;
    std::size_t maxPackageSize = kMaxPackageSize;
    std::chrono::milliseconds package{10000};  ///< from a request's first byte to its last
    std::chrono::milliseconds write{5000};     ///< for the client to take a reply, or some packages
};

/// Whether a process of user `peer` may give commands to one of user `own`.
bool isTrustedPeer(uid_t peer, uid_t own);

/// One connected client: reads requests and writes replies without ever blocking. A client that
/// does not take its reply is not read from, so it costs one package of input and one of output at
/// most. Once a command has given it a stream of notifications, it writes these and reads
/// acknowledgements.
class ClientSession : public Connection {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Why a session ended other than by the client's leaving.
    class Broken : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    ClientSession(FileDescriptor socket, const CommandServer& commands, const ServerLimits& limits);

    int fd() const { return socket_.get(); }

    /// What to poll for.
    short events() const;

    /// When the session must have moved on; `Time::max()` while it is idle.
    Time deadline() const { return std::min(writeBy_, readBy_); }

    /// Whether nothing is under way: no request, no reply, no subscription.
    bool isIdle() const { return stream_ == nullptr && deadline() == Time::max(); }

    /// Says that there may be notifications to send. Returns whether the session carries them.
    bool wake();

    void carry(std::unique_ptr<NotificationStream> stream) override;

    /// Reads, answers and writes as far as it goes. Returns whether the session goes on; throws
    /// `Broken` or `ProtocolError` when it must end.
    bool proceed(Time now);

    /// Ends a session whose time is over by throwing `Broken`.
    void checkDeadline(Time now) const;

private:
    bool writing() const { return written_ < output_.size(); }
    bool wantsToWrite() const;
    bool proceedWithCommands(Time now);
    bool proceedWithStream(Time now);
    bool read();
    void flush();
    bool answerNext();
    bool sendNotifications();
    bool takeAcknowledgements();
    void checkEndsBetweenPackages() const;
    void updateDeadlines(Time now, bool wroteOn, bool readOn);

    FileDescriptor socket_;
    const CommandServer& commands_;
    const ServerLimits& limits_;
    PackageAssembler input_;
    Bytes output_;
    std::size_t written_ = 0;
    std::unique_ptr<NotificationStream> stream_;  // null until the client subscribes
    Time writeBy_ = Time::max();                  // when `output_` must have been taken
    Time readBy_ = Time::max();                   // when the package in `input_` must be whole
};

}  // namespace talvik::backend
