#pragma once

#include "backend/alarm.h"
#include "backend/alarm_database.h"
#include "backend/alarm_tags.h"
#include "backend/protocol.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace talvik::backend {

/// How much an alarm store takes.
struct StoreLimits {
    std::int64_t outbox = 1'000'000;                        ///< notifications
    std::int64_t history = 100'000;                         ///< rows; the oldest go first
    std::int64_t historyOctets = std::int64_t{128} << 20U;  ///< of texts; the oldest go first
    std::int64_t lastSerial = 0xFFFFFFFF;                   ///< no serial number is greater
};

/// What became of a request: a code of `result`, and the serial number of what was reported.
struct StoreAnswer {
    std::uint32_t code = result::kSuccess;
    std::uint32_t serial = 0;
};

/// One step of sending active alarms again.
struct ResendStep {
    std::uint32_t code = result::kSuccess;
    std::uint32_t lastSerial = 0;  ///< where the next step goes on
    std::size_t count = 0;         ///< 0: there are no more
};

/// What an alarm store does, one thread at a time: the rules of what belongs together in one
/// change, the limits, and the log. `AlarmStore` says what the operations do.
class AlarmBook {
public:
    AlarmBook(std::string path, const StoreLimits& limits);

    StoreAnswer add(alarm::Kind kind, const Alarm& what);
    std::uint32_t clear(std::uint32_t serial, const std::string& requester, std::uint64_t time);
    ResendStep resend(std::uint32_t after, std::uint32_t last, std::size_t limit);
    bool acknowledge(std::int64_t sequence);

    /// What is committed.
    const AlarmTotals& totals() const { return totals_; }

    /// For reading.
    AlarmDatabase& database() { return *database_; }

private:
    bool hasRoom(std::int64_t notifications);
    void send(AlarmTotals& next, const std::string& record);
    void remember(AlarmTotals& next, alarm::Kind kind, const ActiveAlarm& what,
                  std::uint64_t clearTime, const std::string& requester);
    bool change(const char* what, const std::function<void()>& work);
    void logFailure(const char* what, const SqliteError& error, const char* consequence) const;

    const std::string path_;
    const StoreLimits limits_;
    std::unique_ptr<AlarmDatabase> database_;
    AlarmTotals totals_;
    bool isFull_ = false;       // and said so in the log
    bool cannotErase_ = false;  // and said so in the log
};

}  // namespace talvik::backend
