#include "host/platform/durable_database.h"

#include "host/platform/log_text.h"
#include "host/platform/write_ahead_log.h"
#include "host/startup_error.h"

#include <sqlite3.h>

#include <utility>

namespace talvik {

namespace {

constexpr int kBusyMilliseconds = 1000;
constexpr std::int64_t kPageSize = 4096;
constexpr const char* kLogSuffix = "-wal";
constexpr std::int64_t kLongLog = std::int64_t{4} << 20U;

void set(SqliteDatabase& database, const char* pragma, std::int64_t value)
{
    database.run((std::string("PRAGMA ") + pragma + " = " + std::to_string(value)).c_str());
}

void fill(SqliteDatabase& database, const DatabaseFormat& format)
{
    SqliteTransaction transaction(database);
    set(database, "application_id", format.applicationId);
    set(database, "user_version", format.version);
    for (const auto* statements : {&format.tables, &format.rows}) {
        for (const auto& sql : *statements) {
            database.run(sql.c_str());
        }
    }
    transaction.commit();
}

/// Fills an empty file. A rollback journal, not a log, is beside it until the end.
void fillFile(const std::string& path, const DatabaseFormat& format)
{
    SqliteDatabase database(path, kBusyMilliseconds);
    set(database, "page_size", kPageSize);
    database.run("PRAGMA synchronous = FULL");
    fill(database, format);
}

bool hasTables(SqliteDatabase& database, const DatabaseFormat& format)
{
    SqliteStatement table(database, "SELECT count(*) FROM sqlite_schema WHERE sql = ?1");
    for (const auto& sql : format.tables) {
        table.bind(1, sql);
        const bool found = table.step() && table.number(0) == 1;
        if (!found) {
            return false;
        }
        table.step();
    }
    return true;
}

/// Throws unless the file is one of this format and whole.
void check(SqliteDatabase& database, const std::string& path, const DatabaseFormat& format)
{
    if (database.number("PRAGMA application_id") != format.applicationId) {
        throw DamagedFile("it does not hold " + format.content +
                          ": its application_id is another's");
    }
    const auto version = database.number("PRAGMA user_version");
    if (version > format.version) {
        throw StartupError(format.content + " in " + path +
                           " were written by a later release (format " + std::to_string(version) +
                           ", this one knows " + std::to_string(format.version) +
                           "): start that release, or move the file away to begin without any");
    }
    const auto finding = database.text("PRAGMA quick_check(1)");
    if (finding != "ok") {
        // A heading may stand before it.
        throw DamagedFile(oneLine(finding.substr(finding.rfind('\n') + 1)));
    }
    if (version != format.version || !hasTables(database, format)) {
        throw DamagedFile("it has not the tables of " + format.content);
    }
}

/// What a failure on opening means.
[[noreturn]] void refuse(const SqliteError& error, const std::string& path,
                         const DatabaseFormat& format)
{
    if (error.meansDamage()) {
        throw DamagedFile(error.what());
    }
    if (error.code() == SQLITE_BUSY || error.code() == SQLITE_LOCKED) {
        throw StartupError(format.content + " in " + path +
                           " are in use by another process: end it (fuser shows which one it is) "
                           "and start " +
                           format.program + " again, or give it another directory");
    }
    throw StartupError("cannot use " + format.content + " in " + path + ": " + error.what() +
                       ". The user of " + format.program +
                       " must be able to read and write the file and its directory, and the disk "
                       "must have room");
}

std::unique_ptr<SqliteDatabase> openInMemory(const DatabaseFormat& format)
{
    auto database = std::make_unique<SqliteDatabase>(DurableDatabase::kInMemory, kBusyMilliseconds);
    fill(*database, format);
    set(*database, "max_page_count", format.maxSize / kPageSize);
    return database;
}

std::unique_ptr<SqliteDatabase> openFile(const std::string& path, const DatabaseFormat& format,
                                         const std::function<void(SqliteDatabase&)>& verify)
{
    prepareDatabaseFile(
        path, [&format](const std::string& name) { fillFile(name, format); }, format.maxSize);
    auto database = std::make_unique<SqliteDatabase>(path, kBusyMilliseconds);
    database->tidyOnClose(false);  // a damaged file is kept as it is found
    database->run("PRAGMA locking_mode = EXCLUSIVE");
    database->run("PRAGMA synchronous = FULL");
    database->run("PRAGMA cell_size_check = ON");
    if (database->isReadOnly()) {
        throw StartupError("cannot write " + format.content + " in " + path +
                           ": make the file writable for the user of " + format.program);
    }
    check(*database, path, format);
    // Not before the lock is held: another process may be writing.
    const auto finding = findingInLog(path + kLogSuffix);
    if (!finding.empty()) {
        throw DamagedFile(finding);
    }
    verify(*database);
    if (database->text("PRAGMA journal_mode = WAL") != "wal") {
        throw StartupError("cannot keep " + format.content + " in " + path +
                           ": its file system does not support a write-ahead log");
    }
    set(*database, "wal_autocheckpoint", 0);  // it would not empty the log
    set(*database, "max_page_count", format.maxSize / kPageSize);
    database->number("PRAGMA user_version");  // opens the log
    database->tidyOnClose(true);
    return database;
}

}  // namespace

std::unique_ptr<DurableDatabase>
DurableDatabase::open(const std::string& path, const DatabaseFormat& format,
                      const std::function<void(SqliteDatabase&)>& verify)
{
    try {
        std::unique_ptr<SqliteDatabase> database;
        std::optional<FileIdentity> log;
        if (path == kInMemory) {
            database = openInMemory(format);
            verify(*database);
        } else {
            database = openFile(path, format, verify);
            log.emplace(path + kLogSuffix);
        }
        return std::unique_ptr<DurableDatabase>(
            new DurableDatabase(std::move(database), std::move(log), format.program));
    } catch (const SqliteError& error) {
        refuse(error, path, format);
    }
}

DurableDatabase::DurableDatabase(std::unique_ptr<SqliteDatabase> database,
                                 std::optional<FileIdentity> log, std::string program)
    : database_(std::move(database)),
      log_(std::move(log)),
      program_(std::move(program))
{
    try {
        tidyLog();
    } catch (const SqliteError&) {
        // The content is whole and can be read. The first change tries again, and reports.
    }
}

void DurableDatabase::change(const std::function<void()>& work)
{
    begin();
    try {
        SqliteTransaction transaction(*database_);
        work();
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

void DurableDatabase::begin()
{
    if (!log_) {
        return;
    }
    // What is written to a file without a name is lost with the process.
    if (database_->wasMoved() || log_->wasMoved()) {
        throw SqliteError(SQLITE_READONLY,
                          "the file or its log was moved, removed or replaced while " + program_ +
                              " had it open; put it back, or restart " + program_);
    }
    undoFailed();
    if (!logIsTidy_ || database_->logSize() > kLongLog) {
        tidyLog();
    }
    failedFrom_ = database_->logSize();
}

/// Takes what a change that failed has written off the log. Without that no other change begins.
void DurableDatabase::undoFailed()
{
    if (failedFrom_) {
        database_->cutLog(*failedFrom_);
        failedFrom_.reset();
    }
}

/// SQLite would begin to write a log anew from its front if this was cut short behind the moving.
void DurableDatabase::tidyLog()
{
    logIsTidy_ = false;
    if (log_) {
        database_->checkpoint();
    }
    logIsTidy_ = true;
}

}  // namespace talvik
