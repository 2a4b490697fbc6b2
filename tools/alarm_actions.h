#pragma once

#include "tools/alarm_input.h"
#include "tools/socket_client.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace talvik::ctl {

/// A limit that no list of alarms reaches.
constexpr auto kAllAlarms = std::numeric_limits<std::uint32_t>::max();

/// What a `talvikctl alarm` command was asked.
struct AlarmOptions {
    SocketOptions socket;
    AlarmReport report;                   ///< of raise and event, without the parameters
    std::vector<std::string> parameters;  ///< of raise and event
    std::vector<std::uint32_t> serials;   ///< of clear
    std::uint32_t after = 0;              ///< of list: the serial number that it begins behind
    std::uint32_t limit = kAllAlarms;     ///< of list: how many alarms at most
    std::string scenario;                 ///< the file
    bool keepGoing = false;               ///< of scenario
};

/// Each carries its command out, prints what came of it and returns the exit status. They throw
/// `StartupError` when a file or the socket path cannot be used.
int runAlarmRaise(const AlarmOptions& options);
int runAlarmEvent(const AlarmOptions& options);
int runAlarmList(const AlarmOptions& options);
int runAlarmClear(const AlarmOptions& options);
int runAlarmResend(const AlarmOptions& options);
int runAlarmScenario(const AlarmOptions& options);

}  // namespace talvik::ctl
