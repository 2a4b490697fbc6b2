#pragma once

#include "backend/background_work.h"
#include "backend/client_session.h"
#include "backend/command_server.h"
#include "backend/listening_socket.h"

#include <sys/types.h>

#include <cstddef>
#include <list>
#include <string>
#include <utility>
#include <vector>

struct pollfd;

namespace talvik::backend {

/// Serves a command server's commands on a Unix-domain socket, all clients in the one thread that
/// calls `run`. Nothing that a client does or leaves undone keeps another client waiting.
class SocketServer {
public:
    /// Listens on `path` at once. `commands` and `work`, if there is any, must outlive the server.
    /// Throws `StartupError` when it cannot listen.
    SocketServer(const CommandServer& commands, const std::string& path,
                 const ServerLimits& limits = ServerLimits(), BackgroundWork* work = nullptr);

    /// Serves until `stopFd` becomes readable. Throws `std::system_error` when the system no longer
    /// lets it wait.
    void run(int stopFd);

private:
    struct Client {
        Client(std::string known, FileDescriptor socket, const CommandServer& commands,
               const ServerLimits& limits)
            : name(std::move(known)),
              session(std::move(socket), commands, limits)
        {
        }

        std::string name;  // for log lines
        ClientSession session;
    };

    using Time = ClientSession::Time;

    std::vector<pollfd> watched(int stopFd, Time now) const;
    int waitLimit(Time now) const;
    bool proceedWithWork(bool woken, Time now);
    void serveClients(const std::vector<pollfd>& events, bool woken);
    bool goesOn(Client& client, bool ready, Time now);
    void acceptAll(Time now);
    bool makeRoom();
    void admit(FileDescriptor socket);

    const CommandServer& commands_;
    const ServerLimits limits_;
    BackgroundWork* const work_;  // may be null
    ListeningSocket listener_;
    std::list<Client> clients_;  ///< those that have been idle for the longest time first
    unsigned long admitted_ = 0;
    bool makingRoom_ = false;  // a client was disconnected for another and none has left since
    bool refusing_ = false;    // a client was refused for lack of room and none has left since
    Time acceptAgain_ = Time::min();  // no accepting before this: the process is out of resources
};

}  // namespace talvik::backend
