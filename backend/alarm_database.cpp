#include "backend/alarm_database.h"

#include "host/platform/database_files.h"

namespace talvik::backend {

namespace {

constexpr const char* kTables[] = {
    R"(CREATE TABLE counter(
    id INTEGER PRIMARY KEY CHECK(id = 1),
    last_serial INTEGER NOT NULL CHECK(last_serial BETWEEN 0 AND 4294967295)
) STRICT)",
    R"(CREATE TABLE active(
    serial INTEGER PRIMARY KEY CHECK(serial BETWEEN 1 AND 4294967295),
    alarm_id INTEGER NOT NULL,
    level INTEGER NOT NULL CHECK(level BETWEEN 0 AND 4294967295),
    time INTEGER NOT NULL,
    parameters TEXT NOT NULL
) STRICT)",
    R"(CREATE TABLE history(
    position INTEGER PRIMARY KEY,
    serial INTEGER NOT NULL,
    kind INTEGER NOT NULL,
    alarm_id INTEGER NOT NULL,
    level INTEGER NOT NULL,
    time INTEGER NOT NULL,
    clear_time INTEGER NOT NULL,
    requester TEXT NOT NULL,
    parameters TEXT NOT NULL
) STRICT)",
    R"(CREATE TABLE outbox(
    sequence INTEGER PRIMARY KEY CHECK(sequence > 0),
    record BLOB NOT NULL
) STRICT)",
};

constexpr const char* kActiveColumns =
    "SELECT serial, alarm_id, level, time, parameters FROM active ";
constexpr const char* kHistoryOctets =
    "length(CAST(requester AS BLOB)) + length(CAST(parameters AS BLOB))";

DatabaseFormat format()
{
    return {"the alarms",
            "the back end",
            0x54564131,  // "TVA1"
            1,
            {std::begin(kTables), std::end(kTables)},
            {"INSERT INTO counter(id, last_serial) VALUES(1, 0)"},
            AlarmDatabase::kMaxSize};
}

AlarmTotals totalsOf(SqliteDatabase& database)
{
    AlarmTotals totals;
    if (database.number("SELECT count(*) FROM counter") != 1) {
        throw DamagedFile("the last serial number is gone");
    }
    totals.lastSerial = database.number("SELECT last_serial FROM counter");
    if (database.number("SELECT coalesce(max(serial), 0) FROM active") > totals.lastSerial) {
        throw DamagedFile("an active alarm has a serial number that was not given yet");
    }
    totals.active = database.number("SELECT count(*) FROM active");
    totals.outbox = database.number("SELECT count(*) FROM outbox");
    totals.lastSequence = database.number("SELECT coalesce(max(sequence), 0) FROM outbox");
    totals.history = database.number("SELECT count(*) FROM history");
    totals.historyOctets = database.number(
        (std::string("SELECT coalesce(sum(") + kHistoryOctets + "), 0) FROM history").c_str());
    return totals;
}

std::unique_ptr<DurableDatabase> openWith(const std::string& path, AlarmTotals& totals)
{
    return DurableDatabase::open(
        path, format(), [&totals](SqliteDatabase& database) { totals = totalsOf(database); });
}

/// Numbers of 64 bits without a sign are kept as those with the same bits.
std::int64_t kept(std::uint64_t number)
{
    return static_cast<std::int64_t>(number);
}

ActiveAlarm activeFrom(const SqliteStatement& row)
{
    ActiveAlarm found;
    found.serial = static_cast<std::uint32_t>(row.number(0));
    found.alarm.id = static_cast<std::uint64_t>(row.number(1));
    found.alarm.level = static_cast<std::uint32_t>(row.number(2));
    found.alarm.time = static_cast<std::uint64_t>(row.number(3));
    found.alarm.parameters = row.text(4);
    return found;
}

void run(SqliteStatement& statement)
{
    while (statement.step()) {
    }
}

}  // namespace

AlarmDatabase::AlarmDatabase(const std::string& path)
    : database_(openWith(path, totals_)),
      activeAfter_(
          connection(),
          (std::string(kActiveColumns) + "WHERE serial > ?1 ORDER BY serial LIMIT ?2").c_str()),
      setLastSerial_(connection(), "UPDATE counter SET last_serial = ?1"),
      insertActive_(connection(), "INSERT INTO active(serial, alarm_id, level, time, parameters) "
                                  "VALUES(?1, ?2, ?3, ?4, ?5)"),
      eraseActive_(connection(), "DELETE FROM active WHERE serial = ?1"),
      insertNotification_(connection(),
                          "INSERT INTO outbox(sequence, record) VALUES(?1, CAST(?2 AS BLOB))"),
      eraseNotifications_(connection(), "DELETE FROM outbox WHERE sequence <= ?1"),
      insertHistory_(connection(),
                     "INSERT INTO history(serial, kind, alarm_id, level, time, clear_time, "
                     "requester, parameters) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)"),
      eraseHistory_(connection(), "DELETE FROM history WHERE position = ?1")
{
}

std::optional<ActiveAlarm> AlarmDatabase::active(std::uint32_t serial)
{
    SqliteStatement row(connection(), (std::string(kActiveColumns) + "WHERE serial = ?1").c_str());
    row.bind(1, std::int64_t{serial});
    return row.step() ? std::optional(activeFrom(row)) : std::nullopt;
}

ActivePage AlarmDatabase::activeAfter(std::uint32_t serial, std::size_t limit, std::size_t octets)
{
    activeAfter_.bind(1, std::int64_t{serial});
    activeAfter_.bind(2, static_cast<std::int64_t>(limit) + 1);  // one more tells whether it is all
    const SqliteReading reading(activeAfter_);
    ActivePage page;
    std::size_t taken = 0;
    while (activeAfter_.step()) {
        if (page.alarms.size() == limit || taken >= octets) {
            return page;
        }
        page.alarms.push_back(activeFrom(activeAfter_));
        taken += page.alarms.back().alarm.parameters.size();
    }
    page.isLast = true;
    return page;
}

std::vector<Notification> AlarmDatabase::notificationsAfter(std::int64_t sequence,
                                                            std::size_t limit, std::size_t octets)
{
    SqliteStatement row(connection(), "SELECT sequence, record FROM outbox WHERE sequence > ?1 "
                                      "ORDER BY sequence LIMIT ?2");
    row.bind(1, sequence);
    row.bind(2, static_cast<std::int64_t>(limit));
    std::vector<Notification> page;
    for (std::size_t taken = 0; taken < octets && row.step();) {
        page.push_back({row.number(0), row.text(1)});
        taken += page.back().record.size();
    }
    return page;
}

void AlarmDatabase::setLastSerial(std::int64_t serial)
{
    setLastSerial_.bind(1, serial);
    run(setLastSerial_);
}

void AlarmDatabase::insertActive(const ActiveAlarm& what)
{
    insertActive_.bind(1, std::int64_t{what.serial});
    insertActive_.bind(2, kept(what.alarm.id));
    insertActive_.bind(3, std::int64_t{what.alarm.level});
    insertActive_.bind(4, kept(what.alarm.time));
    insertActive_.bind(5, what.alarm.parameters);
    run(insertActive_);
}

void AlarmDatabase::eraseActive(std::uint32_t serial)
{
    eraseActive_.bind(1, std::int64_t{serial});
    run(eraseActive_);
}

void AlarmDatabase::insertNotification(std::int64_t sequence, const std::string& record)
{
    insertNotification_.bind(1, sequence);
    insertNotification_.bind(2, record);
    run(insertNotification_);
}

std::int64_t AlarmDatabase::eraseNotifications(std::int64_t sequence)
{
    eraseNotifications_.bind(1, sequence);
    run(eraseNotifications_);
    return connection().changes();
}

void AlarmDatabase::insertHistory(unsigned kind, const ActiveAlarm& what, std::uint64_t clearTime,
                                  const std::string& requester)
{
    insertHistory_.bind(1, std::int64_t{what.serial});
    insertHistory_.bind(2, std::int64_t{kind});
    insertHistory_.bind(3, kept(what.alarm.id));
    insertHistory_.bind(4, std::int64_t{what.alarm.level});
    insertHistory_.bind(5, kept(what.alarm.time));
    insertHistory_.bind(6, kept(clearTime));
    insertHistory_.bind(7, requester);
    insertHistory_.bind(8, what.alarm.parameters);
    run(insertHistory_);
}

std::int64_t AlarmDatabase::eraseOldestHistory()
{
    std::int64_t octets = 0;
    {
        SqliteStatement oldest(connection(), (std::string("SELECT position, ") + kHistoryOctets +
                                              " FROM history ORDER BY position LIMIT 1")
                                                 .c_str());
        if (!oldest.step()) {
            return 0;
        }
        eraseHistory_.bind(1, oldest.number(0));
        octets = oldest.number(1);
    }
    run(eraseHistory_);
    return octets;
}

}  // namespace talvik::backend
