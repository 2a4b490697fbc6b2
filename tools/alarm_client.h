#pragma once

#include "tools/alarm_target.h"
#include "tools/socket_client.h"

#include <cstdint>

namespace talvik::ctl {

/// The back end's alarms over its socket, on one connection.
class AlarmClient : public AlarmTarget {
public:
    /// Throws `StartupError` when the device configuration or the socket path cannot be used.
    explicit AlarmClient(const SocketOptions& options) : client_(options) {}

    std::uint32_t raise(const AlarmReport& report) override;
    std::uint32_t reportEvent(const AlarmReport& report) override;
    void clear(std::uint32_t serial) override;

    /// How many active alarms will be sent to the agent again.
    std::uint32_t resend();

private:
    std::uint32_t report(const RequestName& name, const AlarmReport& report);

    SocketClient client_;
};

}  // namespace talvik::ctl
