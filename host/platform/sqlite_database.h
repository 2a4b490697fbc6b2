#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace talvik {

/// What SQLite could not do. `what()` is SQLite's reason, with that of the system where there is
/// one.
class SqliteError : public std::runtime_error {
public:
    SqliteError(int code, const std::string& reason) : std::runtime_error(reason), code_(code) {}

    /// The primary result code: SQLITE_BUSY and so on.
    int code() const { return code_; }

    /// True if the file's content is to blame.
    bool meansDamage() const;

private:
    int code_;
};

class SqliteStatement;

/// A connection to one database file, used by one thread at a time. Every failure is a
/// `SqliteError`.
class SqliteDatabase {
public:
    /// Opens `path`, which must exist. Waits at most `busyMilliseconds` for another connection's
    /// lock. What the file defines by itself (triggers, functions in its schema) is not run.
    SqliteDatabase(const std::string& path, int busyMilliseconds);
    ~SqliteDatabase();

    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;

    /// Runs SQL that needs no answer.
    void run(const char* sql);

    /// The first column of the only row that `sql` gives.
    std::int64_t number(const char* sql);
    std::string text(const char* sql);

    /// Whether closing moves what the write-ahead log holds into the file and removes the log, as
    /// it does unless told otherwise.
    void tidyOnClose(bool tidy);

    /// Moves what the write-ahead log holds into the file and empties the log.
    void checkpoint();

    /// Octets in the write-ahead log, which must be open.
    std::int64_t logSize();

    /// Cuts the log back to `size` octets, durably. Only behind what was committed.
    void cutLog(std::int64_t size);

    bool isReadOnly() const;

    /// True if the file was renamed, removed or replaced since it was opened.
    bool wasMoved();

    /// Rows that the last statement inserted, changed or removed.
    int changes() const;

private:
    friend class SqliteStatement;
    friend class SqliteTransaction;

    [[noreturn]] void fail() const;

    sqlite3* handle_ = nullptr;
    std::unique_ptr<SqliteStatement> begin_;   ///< of transactions; made by the first one
    std::unique_ptr<SqliteStatement> commit_;  ///< and this too
};

/// A prepared statement of a database that outlives it. Parameters count from 1, columns from 0.
class SqliteStatement {
public:
    SqliteStatement(SqliteDatabase& database, const char* sql);
    ~SqliteStatement();

    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    void bind(int parameter, std::int64_t value);

    /// `value` must last until the statement was run or bound anew.
    void bind(int parameter, const std::string& value);

    /// True while there is a row to read. After false, and after a failure, the statement can be
    /// bound and run again.
    bool step();

    /// Ends reading before the last row: the statement can be bound and run again. One that is left
    /// at a row keeps the write-ahead log from being emptied.
    void reset() noexcept;

    std::int64_t number(int column) const;
    std::string text(int column) const;

private:
    SqliteDatabase& database_;
    sqlite3_stmt* handle_ = nullptr;
};

/// Ends the reading of a statement with its own life, wherever the reading has got to.
class SqliteReading {
public:
    explicit SqliteReading(SqliteStatement& statement) : statement_(statement) {}
    ~SqliteReading() { statement_.reset(); }

    SqliteReading(const SqliteReading&) = delete;
    SqliteReading& operator=(const SqliteReading&) = delete;

private:
    SqliteStatement& statement_;
};

/// A transaction: undone at the end unless it was committed.
class SqliteTransaction {
public:
    explicit SqliteTransaction(SqliteDatabase& database);
    ~SqliteTransaction();

    SqliteTransaction(const SqliteTransaction&) = delete;
    SqliteTransaction& operator=(const SqliteTransaction&) = delete;

    /// Returns when the changes are on disk.
    void commit();

private:
    SqliteDatabase& database_;
};

}  // namespace talvik
