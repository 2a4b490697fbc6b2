#pragma once

#include "host/snmp/object_id.h"

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace talvik {

/// What came of the requests for one subtree since the agent started. A request that names several
/// of its variables, a GETBULK or all phases of a SET count once.
struct RequestCounters {
    std::uint64_t requests = 0;  ///< the others included
    std::uint64_t sets = 0;
    std::uint64_t errors = 0;  ///< answered with an error
};

/// One table or scalar that is served.
struct ServedObject {
    std::string name;
    ObjectId id;
    bool writable = false;
    RequestCounters counters;
};

/// What came of the alarms and events that one notification handler was offered since the agent
/// started.
struct NotificationHandlerCounters {
    std::uint64_t built = 0;    ///< a notification was made, whether or not anybody receives it
    std::uint64_t refused = 0;  ///< none was made, or one that cannot be sent
};

/// One notification handler that the module registered.
struct NotificationHandlerHealth {
    ObjectId base;  ///< that the objects of its notifications hang under; empty when it failed
    NotificationHandlerCounters counters;
};

/// What came of all notifications since the agent started.
struct TrapTotals {
    std::uint64_t sent = 0;
    std::uint64_t failed = 0;
    std::uint64_t answered = 0;
    std::uint64_t givenUp = 0;
    std::uint64_t waiting = 0;  ///< now
};

/// The agent's own health at one moment, as TALVIK-AGENT-MIB shows it. Everything is as last known:
/// nobody is asked for it.
struct AgentHealth {
    enum class Module { Loaded = 1, Missing = 2 };
    enum class Backend { Embedded = 1, Up = 2, Down = 3, Unknown = 4 };
    enum class Master { None = 1, Connected = 2, Away = 3 };

    std::string version;
    std::time_t started = 0;
    std::optional<std::time_t> reloaded;  ///< the latest SIGHUP
    std::string moduleFile;
    Module module = Module::Missing;
    Master master = Master::None;
    std::string backendName;
    Backend backend = Backend::Unknown;
    std::optional<std::time_t> backendAnswered;  ///< the latest answer
    std::uint64_t backendCommands = 0;
    std::uint64_t backendFailures = 0;
    std::uint64_t receivers = 0;
    std::uint64_t notificationsTaken = 0;
    TrapTotals traps;
    std::vector<ServedObject> objects;
    std::vector<NotificationHandlerHealth> notificationHandlers;  ///< as they are asked
};

/// The sum over all objects.
RequestCounters totalOf(const std::vector<ServedObject>& objects);

}  // namespace talvik
