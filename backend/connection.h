#pragma once

#include <memory>

namespace talvik::backend {

class NotificationStream;

/// The connection that a request came by, for commands that change what it carries.
class Connection {
public:
    virtual ~Connection() = default;

    /// Once the request is answered, makes the connection carry `stream`'s notifications and
    /// nothing else any more.
    virtual void carry(std::unique_ptr<NotificationStream> stream) = 0;

protected:
    Connection() = default;
    Connection(const Connection&) = default;
    Connection& operator=(const Connection&) = default;
};

}  // namespace talvik::backend
