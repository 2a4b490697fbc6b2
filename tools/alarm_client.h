#pragma once

#include "tools/active_alarm.h"
#include "tools/alarm_target.h"
#include "tools/socket_client.h"

#include <cstdint>
#include <vector>

namespace talvik::ctl {

/// The back end's alarms over its socket, on one connection.
class AlarmClient : public AlarmTarget {
public:
    /// Throws `StartupError` when the device configuration or the socket path cannot be used.
    explicit AlarmClient(const SocketOptions& options) : client_(options) {}

    std::uint32_t raise(const AlarmReport& report) override;
    std::uint32_t reportEvent(const AlarmReport& report) override;
    void clear(std::uint32_t serial) override;

    /// The first `limit` active alarms with a greater serial number, ascending. They are asked for
    /// page by page: what is raised or cleared meanwhile may be among them or not.
    std::vector<ActiveAlarm> active(std::uint32_t after, std::uint32_t limit);

    /// How many active alarms will be sent to the agent again.
    std::uint32_t resend();

private:
    /// Appends the next alarms to `alarms`; returns whether there may be more.
    bool askForMore(std::uint32_t after, std::uint32_t count, std::vector<ActiveAlarm>& alarms);

    std::uint32_t report(const RequestName& name, const AlarmReport& report);

    SocketClient client_;
};

}  // namespace talvik::ctl
