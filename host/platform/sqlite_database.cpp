#include "host/platform/sqlite_database.h"

#include <sqlite3.h>

#include <cstring>

namespace talvik {

namespace {

constexpr int kPrimaryCode = 0xFF;

std::string reasonOf(sqlite3* handle)
{
    std::string reason = sqlite3_errmsg(handle);
    // The system's error stays what it was when a later failure has none.
    const int code = sqlite3_errcode(handle) & kPrimaryCode;
    const int systemError = sqlite3_system_errno(handle);
    if (systemError != 0 && (code == SQLITE_CANTOPEN || code == SQLITE_IOERR)) {
        reason += std::string(" (") + std::strerror(systemError) + ")";
    }
    return reason;
}

}  // namespace

bool SqliteError::meansDamage() const
{
    return code_ == SQLITE_CORRUPT || code_ == SQLITE_NOTADB;
}

SqliteDatabase::SqliteDatabase(const std::string& path, int busyMilliseconds)
{
    // Without SQLite's own mutex: there is one thread at a time.
    const int result = sqlite3_open_v2(path.c_str(), &handle_,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (result != SQLITE_OK) {
        const auto reason = reasonOf(handle_);
        sqlite3_close(handle_);
        throw SqliteError(result & kPrimaryCode, reason);
    }
    sqlite3_busy_timeout(handle_, busyMilliseconds);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
}

SqliteDatabase::~SqliteDatabase()
{
    commit_.reset();  // a database with statements is not closed
    begin_.reset();
    sqlite3_close(handle_);
}

void SqliteDatabase::run(const char* sql)
{
    if (sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail();
    }
}

std::int64_t SqliteDatabase::number(const char* sql)
{
    SqliteStatement statement(*this, sql);
    return statement.step() ? statement.number(0) : 0;
}

std::string SqliteDatabase::text(const char* sql)
{
    SqliteStatement statement(*this, sql);
    return statement.step() ? statement.text(0) : "";
}

void SqliteDatabase::tidyOnClose(bool tidy)
{
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, tidy ? 0 : 1, nullptr);
}

void SqliteDatabase::checkpoint()
{
    if (number("PRAGMA wal_checkpoint(TRUNCATE)") != 0) {
        throw SqliteError(SQLITE_BUSY, "the write-ahead log is in use");
    }
}

namespace {

sqlite3_file& logOf(sqlite3* handle)
{
    sqlite3_file* log = nullptr;
    if (sqlite3_file_control(handle, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log) != SQLITE_OK ||
        log == nullptr || log->pMethods == nullptr) {
        throw SqliteError(SQLITE_CANTOPEN, "the write-ahead log is not open");
    }
    return *log;
}

}  // namespace

std::int64_t SqliteDatabase::logSize()
{
    auto& log = logOf(handle_);
    sqlite3_int64 size = 0;
    const int result = log.pMethods->xFileSize(&log, &size);
    if (result != SQLITE_OK) {
        throw SqliteError(result & kPrimaryCode, "the size of the write-ahead log is not known");
    }
    return size;
}

void SqliteDatabase::cutLog(std::int64_t size)
{
    auto& log = logOf(handle_);
    int result = log.pMethods->xTruncate(&log, size);
    if (result == SQLITE_OK) {
        result = log.pMethods->xSync(&log, SQLITE_SYNC_NORMAL);
    }
    if (result != SQLITE_OK) {
        throw SqliteError(result & kPrimaryCode,
                          std::string("cannot cut the write-ahead log: ") + sqlite3_errstr(result));
    }
}

bool SqliteDatabase::isReadOnly() const
{
    return sqlite3_db_readonly(handle_, "main") != 0;
}

bool SqliteDatabase::wasMoved()
{
    int moved = 0;
    return sqlite3_file_control(handle_, "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK &&
           moved != 0;
}

int SqliteDatabase::changes() const
{
    return sqlite3_changes(handle_);
}

void SqliteDatabase::fail() const
{
    throw SqliteError(sqlite3_errcode(handle_) & kPrimaryCode, reasonOf(handle_));
}

SqliteStatement::SqliteStatement(SqliteDatabase& database, const char* sql) : database_(database)
{
    if (sqlite3_prepare_v2(database.handle_, sql, -1, &handle_, nullptr) != SQLITE_OK) {
        database.fail();
    }
}

SqliteStatement::~SqliteStatement()
{
    sqlite3_finalize(handle_);
}

void SqliteStatement::bind(int parameter, std::int64_t value)
{
    if (sqlite3_bind_int64(handle_, parameter, value) != SQLITE_OK) {
        database_.fail();
    }
}

void SqliteStatement::bind(int parameter, const std::string& value)
{
    if (sqlite3_bind_text64(handle_, parameter, value.data(), value.size(), SQLITE_STATIC,
                            SQLITE_UTF8) != SQLITE_OK) {
        database_.fail();
    }
}

bool SqliteStatement::step()
{
    const int result = sqlite3_step(handle_);
    if (result == SQLITE_ROW) {
        return true;
    }
    if (result == SQLITE_DONE) {
        sqlite3_reset(handle_);
        return false;
    }
    const auto reason = reasonOf(database_.handle_);
    sqlite3_reset(handle_);
    throw SqliteError(result & kPrimaryCode, reason);
}

void SqliteStatement::reset() noexcept
{
    sqlite3_reset(handle_);  // its result repeats that of the last step
}

std::int64_t SqliteStatement::number(int column) const
{
    return sqlite3_column_int64(handle_, column);
}

std::string SqliteStatement::text(int column) const
{
    const auto* octets = reinterpret_cast<const char*>(sqlite3_column_text(handle_, column));
    if (octets == nullptr) {
        return {};  // NULL
    }
    return {octets, static_cast<std::size_t>(sqlite3_column_bytes(handle_, column))};
}

SqliteTransaction::SqliteTransaction(SqliteDatabase& database) : database_(database)
{
    if (database_.begin_ == nullptr) {
        database_.begin_ = std::make_unique<SqliteStatement>(database_, "BEGIN IMMEDIATE");
        database_.commit_ = std::make_unique<SqliteStatement>(database_, "COMMIT");
    }
    database_.begin_->step();
}

SqliteTransaction::~SqliteTransaction()
{
    // SQLite itself may have undone it after a failure. If this fails, the next one cannot begin
    // and says so.
    if (sqlite3_get_autocommit(database_.handle_) == 0) {
        sqlite3_exec(database_.handle_, "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void SqliteTransaction::commit()
{
    database_.commit_->step();
}

}  // namespace talvik
