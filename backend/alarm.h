#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace talvik::backend {

/// What was reported: a fault or an event.
struct Alarm {
    std::uint64_t id = 0;     ///< names the definition in the catalogue
    std::uint32_t level = 0;  ///< severity
    std::uint64_t time = 0;   ///< when it occurred, in seconds since 1970
    std::string parameters;   ///< what the texts of the definition are filled in with
};

/// A fault that was not cleared yet.
struct ActiveAlarm {
    std::uint32_t serial = 0;
    Alarm alarm;
};

/// Some of the active alarms, by ascending serial number.
struct ActivePage {
    std::vector<ActiveAlarm> alarms;
    bool isLast = false;  ///< none has a greater serial number
};

/// What the host is to be told. Sequences ascend.
struct Notification {
    std::int64_t sequence = 0;
    std::string record;  ///< the octets of one record, as they go over the wire
};

}  // namespace talvik::backend
