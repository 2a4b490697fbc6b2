#pragma once

#include "backend/record_builder.h"
#include "host/link/socket_link.h"
#include "host/platform/device_config_file.h"
#include "tools/output_options.h"
#include "tools/request_refusal.h"

#include <functional>
#include <string>

namespace talvik::ctl {

constexpr unsigned kDefaultAnswerMs = 1000;

/// Where a command goes and how long it waits.
struct SocketOptions {
    std::string socket;
    std::string device;
    unsigned timeoutMs = kDefaultAnswerMs;
    OutputOptions output;
};

/// What a request is, apart from its cells.
struct RequestName {
    Peer peer = Peer::BackEnd;
    const char* command = "";  ///< as the device configuration calls it
    std::string task;          ///< for people: "clear alarm 7"
    bool changes = true;       ///< false when it only asks
};

/// One connection to the agent or to a back end, for commands one after the other.
class SocketClient {
public:
    using AddCells = std::function<void(backend::RecordBuilder&)>;

    /// Throws `StartupError` when the device configuration or the socket path cannot be used.
    explicit SocketClient(const SocketOptions& options);

    /// Sends the request and waits for the answer. Throws `Failure`, and `StartupError` when the
    /// device configuration has no such command.
    void ask(const RequestName& name, const AddCells& addCells, Package& answer);

private:
    SocketOptions options_;
    DeviceConfigFile config_;
    SocketLink link_;
};

}  // namespace talvik::ctl
