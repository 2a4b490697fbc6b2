#pragma once

#include "backend/alarm_commands.h"
#include "host/platform/durable_database.h"
#include "tests/unit/backend/program.h"
#include "tests/unit/backend/wire.h"

#include <cstdint>

namespace talvik::test {

/// What the time is at an `AlarmDesk`.
constexpr std::uint64_t kNow = 1700000000;

/// The commands about alarms on a store in memory, at a time that stands still.
class AlarmDesk {
public:
    AlarmDesk()
    {
        addAlarmCommands(server_, DeviceConfigFile::load(sampleDeviceFile()),
                         {store, source_, resend_, [this] { ++wakes; }, [] { return kNow; }});
    }

    /// The reply to request 7.
    backend::Bytes ask(std::uint64_t command, const Wire& cells) const
    {
        auto wire = Wire::package(1, 7, 0xFFFFFFFF, Wire::record(command, cells)).bytes();
        return server_.serve(wire);
    }

    backend::AlarmStore store{DurableDatabase::kInMemory};
    int wakes = 0;

private:
    backend::NotificationSource source_{store};
    backend::ResendJob resend_{store};
    backend::CommandServer server_;
};

}  // namespace talvik::test
