#pragma once

#include "backend/alarm.h"
#include "host/platform/durable_database.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace talvik::backend {

/// How much the database holds, and where its numbers are.
struct AlarmTotals {
    std::int64_t lastSerial = 0;
    std::int64_t active = 0;
    std::int64_t history = 0;
    std::int64_t historyOctets = 0;  ///< of texts
    std::int64_t outbox = 0;
    std::int64_t lastSequence = 0;
};

/// The statements of the alarm store's database:
///
///     counter(id, last_serial)                                 one row
///     active(serial, alarm_id, level, time, parameters)
///     history(position, serial, kind, alarm_id, level, time, clear_time, requester, parameters)
///     outbox(sequence, record)
///
/// Every failure is a `SqliteError`. Used by one thread at a time.
class AlarmDatabase {
public:
    /// The file never grows beyond this; what does not fit is refused.
    static constexpr std::int64_t kMaxSize = std::int64_t{1} << 30U;

    /// Opens or makes the database; throws what `DurableDatabase::open` does.
    explicit AlarmDatabase(const std::string& path);

    const AlarmTotals& totalsAtStart() const { return totals_; }

    std::optional<ActiveAlarm> active(std::uint32_t serial);

    /// The first active alarms with a greater serial number: at most `limit`, and none whose
    /// parameters begin beyond `octets` of them.
    ActivePage activeAfter(std::uint32_t serial, std::size_t limit, std::size_t octets);

    /// The first notifications with a greater sequence, ascending: at most `limit`, and none that
    /// begins beyond `octets` of records.
    std::vector<Notification> notificationsAfter(std::int64_t sequence, std::size_t limit,
                                                 std::size_t octets);

    /// Runs `work`, which calls what follows, as one change.
    void change(const std::function<void()>& work) { database_->change(work); }

    void setLastSerial(std::int64_t serial);
    void insertActive(const ActiveAlarm& what);
    void eraseActive(std::uint32_t serial);
    void insertNotification(std::int64_t sequence, const std::string& record);

    /// Erases the notifications up to `sequence` and returns how many there were.
    std::int64_t eraseNotifications(std::int64_t sequence);

    /// `requester` is who cleared it, at `clearTime`; an event has neither.
    void insertHistory(unsigned kind, const ActiveAlarm& what, std::uint64_t clearTime,
                       const std::string& requester);

    /// Erases the oldest row of the history, if there is one, and returns the octets of its texts.
    std::int64_t eraseOldestHistory();

private:
    SqliteDatabase& connection() { return database_->connection(); }

    AlarmTotals totals_;
    std::unique_ptr<DurableDatabase> database_;
    SqliteStatement activeAfter_;
    SqliteStatement setLastSerial_;
    SqliteStatement insertActive_;
    SqliteStatement eraseActive_;
    SqliteStatement insertNotification_;
    SqliteStatement eraseNotifications_;
    SqliteStatement insertHistory_;
    SqliteStatement eraseHistory_;
};

}  // namespace talvik::backend
