#pragma once

#include "backend/protocol.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace talvik::backend {

class Connection;

/// Answers requests; knows nothing of how they came. Commands are added first, then `answer` and
/// `serve` may be called from any thread as far as the commands allow it.
class CommandServer {
public:
    /// Appends records to `reply` and returns the result code. When it is not 0, or an exception
    /// leaves the command, the reply goes out without records.
    using Command = std::function<std::uint32_t(const Package& request, Package& reply)>;

    /// Makes `command` what requests whose first record is `number` run; `name` is for log lines.
    /// Throws `StartupError` when the number is taken.
    void add(std::uint64_t number, const std::string& name, Command command);

    /// A command that changes what the connection carries that the request came by.
    using ConnectionCommand =
        std::function<std::uint32_t(Connection& connection, const Package& request)>;

    /// As `add`. A request that came by no connection is answered `result::kBadRequest`; a reply
    /// has no records.
    void addForConnection(std::uint64_t number, const std::string& name, ConnectionCommand command);

    /// Makes `reply`, a new package, the answer to `request`, which came by `connection`, if by
    /// any. Throws nothing but an allocation failure of its own; a command's failure becomes a
    /// result code.
    void answer(const Package& request, Package& reply, Connection* connection = nullptr) const;

    /// As `answer`, from bytes to bytes. Throws `ProtocolError` when `wire` is no request.
    Bytes serve(Bytes& wire, Connection* connection = nullptr) const;

private:
    struct Entry {
        std::string name;
        std::function<std::uint32_t(const Package&, Package&, Connection*)> run;
    };

    void addEntry(std::uint64_t number, Entry added);
    std::uint32_t run(const Package& request, Package& reply, Connection* connection) const;

    std::map<std::uint64_t, Entry> commands_;
};

}  // namespace talvik::backend
