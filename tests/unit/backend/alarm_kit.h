#pragma once

#include "backend/alarm_store.h"
#include "tests/unit/backend/wire.h"

#include <cstdint>
#include <string>
#include <vector>

namespace talvik::test {

constexpr std::uint64_t kAlarmRecord = 0xD00C900B6;

inline backend::Alarm alarmOf(std::uint64_t id, const std::string& parameters = "CTE0,B")
{
    return {id, 3, 1000 + id, parameters};
}

/// The record that the host gets, byte by byte. `kind` is 1 for a fault, 2 for an event and 8 for a
/// clearing.
inline Wire alarmRecordOf(unsigned kind, std::uint32_t serial, const backend::Alarm& alarm,
                          std::uint64_t clearTime = 0)
{
    Wire cells;
    cells.numberCell(0, kind, 1)
        .numberCell(1, alarm.id, 8)
        .numberCell(2, alarm.level, 4)
        .numberCell(3, serial, 4)
        .numberCell(4, alarm.time, 8)
        .numberCell(5, 0, 8)
        .numberCell(6, clearTime, 8)
        .textCell(8, alarm.parameters)
        .numberCell(73, kind == 2 ? 1 : 0, 4);
    return Wire::record(kAlarmRecord, cells);
}

inline Wire faultOf(std::uint32_t serial, const backend::Alarm& alarm)
{
    return alarmRecordOf(1, serial, alarm);
}

/// All that waits in the outbox.
inline std::vector<std::string> outboxOf(const backend::AlarmStore& store)
{
    std::vector<std::string> records;
    for (const auto& notification : store.nextNotifications(0, 1'000'000, SIZE_MAX)) {
        records.push_back(notification.record);
    }
    return records;
}

inline std::vector<std::uint32_t> serialsOf(const backend::AlarmStore& store)
{
    std::vector<std::uint32_t> serials;
    for (const auto& entry : store.pageOfActive(0, 1'000'000, SIZE_MAX).alarms) {
        serials.push_back(entry.serial);
    }
    return serials;
}

}  // namespace talvik::test
