#pragma once

#include "backend/alarm_store.h"
#include "backend/command_server.h"
#include "backend/notification_stream.h"
#include "backend/resend_job.h"
#include "host/platform/device_config_file.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace talvik::backend {

/// The longest texts in requests, in bytes without the NUL.
constexpr std::size_t kMaxParameters = std::size_t{32} << 10U;
constexpr std::size_t kMaxRequester = 255;

/// How many alarms one answer about active alarms holds at most, and beyond how many bytes of
/// parameters it begins no further alarm.
constexpr std::uint32_t kMaxAlarmsInPage = 1000;
constexpr std::size_t kMaxParametersInPage = std::size_t{1} << 20U;

/// The last second of the year 9999, since 1970.
constexpr std::uint64_t kMaxTime = 253402300799;

/// What the commands about alarms work on; all of it outlives the server.
struct AlarmServices {
    AlarmStore& store;
    NotificationSource& notifications;
    ResendJob& resend;
    std::function<void()> wake;            ///< after `resend` was started
    std::function<std::uint64_t()> clock;  ///< seconds since 1970
};

/// Adds GET_CURRENT_ALARM, RAISE_ALARM, REPORT_EVENT, CLEAR_ALARM, RESEND_ALARMS and
/// SUBSCRIBE_NOTIFICATIONS. Their numbers come from `config`. Throws `StartupError` when an item is
/// missing or malformed. The commands but the last one can be called from any thread.
void addAlarmCommands(CommandServer& server, const DeviceConfigFile& config,
                      const AlarmServices& services);

}  // namespace talvik::backend
