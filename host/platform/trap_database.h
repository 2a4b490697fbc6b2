#pragma once

#include "host/platform/database_files.h"
#include "host/platform/sqlite_database.h"
#include "trap/trap_dest_info.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace talvik {

/// The trap destinations in a file, an SQLite database with the one table
///
///     destination(id, address, port, version, type, user_name)
///
/// in write-ahead mode, which no other process can use at the same time. Each change is a
/// transaction and on disk when its call returns; a change that fails leaves nothing behind and is
/// a `SqliteError`. Used by one thread at a time.
class TrapDatabase {
public:
    using Rows = std::map<std::uint32_t, tTrapDestInfo>;

    /// Opens `path`, or makes it, and reads it. Throws `DamagedFile` for content that is no list of
    /// at most `maxRows` acceptable destinations; the file and its log are then as they were.
    /// Throws `StartupError` when the file cannot be used although its content may be whole.
    static std::unique_ptr<TrapDatabase> open(const std::string& path, std::size_t maxRows);

    /// The rows that were read on opening; empty from the second call on.
    Rows takeRows();

    void insert(std::uint32_t index, const tTrapDestInfo& destination);
    void update(std::uint32_t index, const tTrapDestInfo& destination);
    void erase(std::uint32_t index);

private:
    TrapDatabase(std::unique_ptr<SqliteDatabase> database, Rows rows, const std::string& path);

    void change(SqliteStatement& statement);
    void undoFailed();
    void tidyLog();

    std::unique_ptr<SqliteDatabase> database_;
    const FileIdentity log_;
    bool logIsTidy_ = false;
    /// Where the log ended before a change that failed and is still to be taken off it.
    std::optional<std::int64_t> failedFrom_;
    Rows rows_;
    SqliteStatement insert_;
    SqliteStatement update_;
    SqliteStatement erase_;
};

}  // namespace talvik
