#include "host/platform/trap_database.h"

#include "host/platform/trap_rules.h"

#include <sqlite3.h>

#include <limits>
#include <utility>

namespace talvik {

namespace {

constexpr std::int64_t kApplicationId = 0x54565444;
constexpr std::int64_t kFormat = 1;
constexpr std::int64_t kMaxSize = std::int64_t{64} << 20U;

// SQLite makes a table in memory for each list behind an IN, at every change: no IN here.
constexpr const char* kTable = R"(CREATE TABLE destination(
    id INTEGER PRIMARY KEY CHECK(id BETWEEN 1 AND 2147483647),
    address TEXT NOT NULL CHECK(length(CAST(address AS BLOB)) BETWEEN 1 AND 254),
    port INTEGER NOT NULL CHECK(port BETWEEN 1 AND 65535),
    version INTEGER NOT NULL CHECK(version BETWEEN 1 AND 3),
    type INTEGER NOT NULL CHECK(type BETWEEN 1 AND 3 OR type = 7),
    user_name TEXT NOT NULL CHECK(length(CAST(user_name AS BLOB)) BETWEEN 1 AND 32)
) STRICT)";

constexpr const char* kInsert =
    "INSERT INTO destination(id, address, port, version, type, user_name) "
    "VALUES(?1, ?2, ?3, ?4, ?5, ?6)";
constexpr const char* kUpdate =
    "UPDATE destination SET address = ?2, port = ?3, version = ?4, type = ?5, user_name = ?6 "
    "WHERE id = ?1";
constexpr const char* kErase = "DELETE FROM destination WHERE id = ?1";
constexpr const char* kSelect =
    "SELECT id, address, port, version, type, user_name FROM destination ORDER BY id";

DatabaseFormat format()
{
    return {"the trap destinations", "the agent", kApplicationId, kFormat, {kTable}, {}, kMaxSize};
}

/// Everything that is no number of 32 bits becomes one that no field accepts.
unsigned int numberAt(const SqliteStatement& row, int column)
{
    const auto value = row.number(column);
    return value < 0 || value > std::numeric_limits<unsigned int>::max()
               ? std::numeric_limits<unsigned int>::max()
               : static_cast<unsigned int>(value);
}

TrapDatabase::Rows readRows(SqliteDatabase& database, std::size_t maxRows)
{
    TrapDatabase::Rows rows;
    SqliteStatement row(database, kSelect);
    while (row.step()) {
        tTrapDestInfo destination;
        destination.index = row.text(0);
        destination.address = row.text(1);
        destination.port = numberAt(row, 2);
        destination.version = numberAt(row, 3);
        destination.type = numberAt(row, 4);
        destination.user = row.text(5);
        const auto index = trap_rules::parseIndex(destination.index);
        const auto objection = trap_rules::objection(destination);
        if (!index || !objection.empty()) {
            throw DamagedFile("its row " + destination.index + " is not acceptable" +
                              (objection.empty() ? "" : ": " + objection));
        }
        if (rows.size() == maxRows) {
            throw DamagedFile("it has more than " + std::to_string(maxRows) + " rows");
        }
        rows.emplace(*index, std::move(destination));
    }
    return rows;
}

}  // namespace

std::unique_ptr<TrapDatabase> TrapDatabase::open(const std::string& path, std::size_t maxRows)
{
    Rows rows;
    auto database = DurableDatabase::open(
        path, format(), [&](SqliteDatabase& content) { rows = readRows(content, maxRows); });
    return std::unique_ptr<TrapDatabase>(new TrapDatabase(std::move(database), std::move(rows)));
}

TrapDatabase::TrapDatabase(std::unique_ptr<DurableDatabase> database, Rows rows)
    : database_(std::move(database)),
      rows_(std::move(rows)),
      insert_(database_->connection(), kInsert),
      update_(database_->connection(), kUpdate),
      erase_(database_->connection(), kErase)
{
}

TrapDatabase::Rows TrapDatabase::takeRows()
{
    return std::exchange(rows_, {});
}

namespace {

void bindRow(SqliteStatement& statement, std::uint32_t index, const tTrapDestInfo& destination)
{
    statement.bind(1, std::int64_t{index});
    statement.bind(2, destination.address);
    statement.bind(3, std::int64_t{destination.port});
    statement.bind(4, std::int64_t{destination.version});
    statement.bind(5, std::int64_t{destination.type});
    statement.bind(6, destination.user);
}

}  // namespace

void TrapDatabase::insert(std::uint32_t index, const tTrapDestInfo& destination)
{
    bindRow(insert_, index, destination);
    change(insert_);
}

void TrapDatabase::update(std::uint32_t index, const tTrapDestInfo& destination)
{
    bindRow(update_, index, destination);
    change(update_);
}

void TrapDatabase::erase(std::uint32_t index)
{
    erase_.bind(1, std::int64_t{index});
    change(erase_);
}

void TrapDatabase::change(SqliteStatement& statement)
{
    database_->change([&] {
        statement.step();
        if (database_->connection().changes() != 1) {
            throw SqliteError(SQLITE_CORRUPT, "the file does not hold the row that is in the list");
        }
    });
}

}  // namespace talvik
