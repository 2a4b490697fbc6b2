#include "host/platform/trap_database.h"

#include "host/platform/database_files.h"
#include "host/platform/log_text.h"
#include "host/platform/trap_rules.h"
#include "host/platform/write_ahead_log.h"
#include "host/startup_error.h"

#include <sqlite3.h>

#include <limits>
#include <utility>

namespace talvik {

namespace {

constexpr int kBusyMilliseconds = 1000;
constexpr std::int64_t kApplicationId = 0x54565444;  // what file(1) shows of a database
constexpr std::int64_t kFormat = 1;                  // counts up when an older agent cannot read it

constexpr const char* kLogSuffix = "-wal";
constexpr std::int64_t kLongLog = std::int64_t{4} << 20U;

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

/// Throws unless the file is one of this format and whole.
void check(SqliteDatabase& database, const std::string& path)
{
    if (database.number("PRAGMA application_id") != kApplicationId) {
        throw DamagedFile("it is no list of trap destinations: its application_id is another's");
    }
    const auto format = database.number("PRAGMA user_version");
    if (format > kFormat) {
        throw StartupError("the trap destinations in " + path +
                           " were written by a later release (format " + std::to_string(format) +
                           ", this one knows " + std::to_string(kFormat) +
                           "): start that release, or move the file away to begin with an empty "
                           "list");
    }
    const auto finding = database.text("PRAGMA quick_check(1)");
    if (finding != "ok") {
        // A heading may stand before it.
        throw DamagedFile(oneLine(finding.substr(finding.rfind('\n') + 1)));
    }
    SqliteStatement table(database, "SELECT count(*) FROM sqlite_schema WHERE sql = ?1");
    const std::string sql = kTable;
    table.bind(1, sql);
    table.step();
    if (format != kFormat || table.number(0) != 1) {
        throw DamagedFile("it has not the table of trap destinations");
    }
}

/// Fills an empty file. A rollback journal, not a log, is beside it until the end.
void fill(const std::string& path)
{
    SqliteDatabase database(path, kBusyMilliseconds);
    database.run("PRAGMA synchronous = FULL");
    SqliteTransaction transaction(database);
    database.run(("PRAGMA application_id = " + std::to_string(kApplicationId)).c_str());
    database.run(("PRAGMA user_version = " + std::to_string(kFormat)).c_str());
    database.run(kTable);
    transaction.commit();
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

/// What a failure on opening means.
[[noreturn]] void refuse(const SqliteError& error, const std::string& path)
{
    if (error.meansDamage()) {
        throw DamagedFile(error.what());
    }
    if (error.code() == SQLITE_BUSY || error.code() == SQLITE_LOCKED) {
        throw StartupError("the trap destinations in " + path +
                           " are in use by another process: end it (fuser shows which one it is) "
                           "and start the agent again");
    }
    throw StartupError("cannot use the trap destinations in " + path + ": " + error.what() +
                       ". The agent's user must be able to read and write the file and its "
                       "directory, and the disk must have room");
}

}  // namespace

std::unique_ptr<TrapDatabase> TrapDatabase::open(const std::string& path, std::size_t maxRows)
{
    try {
        prepareDatabaseFile(path, fill);
        auto database = std::make_unique<SqliteDatabase>(path, kBusyMilliseconds);
        database->tidyOnClose(false);  // a damaged file is kept as it is found
        database->run("PRAGMA locking_mode = EXCLUSIVE");
        database->run("PRAGMA synchronous = FULL");
        database->run("PRAGMA cell_size_check = ON");
        if (database->isReadOnly()) {
            throw StartupError("cannot write the trap destinations in " + path +
                               ": make the file writable for the agent's user");
        }
        check(*database, path);
        // Not before the lock is held: another process may be writing.
        const auto finding = findingInLog(path + kLogSuffix);
        if (!finding.empty()) {
            throw DamagedFile(finding);
        }
        auto rows = readRows(*database, maxRows);
        if (database->text("PRAGMA journal_mode = WAL") != "wal") {
            throw StartupError("cannot keep the trap destinations in " + path +
                               ": its file system does not support a write-ahead log");
        }
        database->run("PRAGMA wal_autocheckpoint = 0");  // it would not empty the log
        database->number("PRAGMA user_version");         // opens the log
        database->tidyOnClose(true);
        return std::unique_ptr<TrapDatabase>(
            new TrapDatabase(std::move(database), std::move(rows), path));
    } catch (const SqliteError& error) {
        refuse(error, path);
    }
}

TrapDatabase::TrapDatabase(std::unique_ptr<SqliteDatabase> database, Rows rows,
                           const std::string& path)
    : database_(std::move(database)),
      log_(path + kLogSuffix),
      rows_(std::move(rows)),
      insert_(*database_, kInsert),
      update_(*database_, kUpdate),
      erase_(*database_, kErase)
{
    try {
        tidyLog();
    } catch (const SqliteError&) {
        // The list is whole and can be read. The first change tries again, and reports.
    }
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
    // What is written to a file without a name is lost with the process.
    if (database_->wasMoved() || log_.wasMoved()) {
        throw SqliteError(SQLITE_READONLY,
                          "the file or its log was moved, removed or replaced while the agent had "
                          "it open; put it back, or restart the agent");
    }
    undoFailed();
    if (!logIsTidy_ || database_->logSize() > kLongLog) {
        tidyLog();
    }
    failedFrom_ = database_->logSize();
    try {
        SqliteTransaction transaction(*database_);
        statement.step();
        if (database_->changes() != 1) {
            throw SqliteError(SQLITE_CORRUPT, "the file does not hold the row that is in the list");
        }
        transaction.commit();
    } catch (const SqliteError& error) {
        // If all but the sync was done, the change would be there again after a kill.
        try {
            undoFailed();
        } catch (const SqliteError& second) {
            throw SqliteError(error.code(), std::string(error.what()) + "; " + second.what() +
                                                ", so the change may be there after a restart");
        }
        throw;
    }
    failedFrom_.reset();
}

/// Takes what a change that failed has written off the log. Without that no other change begins.
void TrapDatabase::undoFailed()
{
    if (failedFrom_) {
        database_->cutLog(*failedFrom_);
        failedFrom_.reset();
    }
}

/// SQLite would begin to write a log anew from its front if this was cut short behind the moving.
void TrapDatabase::tidyLog()
{
    logIsTidy_ = false;
    database_->checkpoint();
    logIsTidy_ = true;
}

}  // namespace talvik
