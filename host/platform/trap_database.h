#pragma once

#include "host/platform/durable_database.h"
#include "host/platform/sqlite_database.h"
#include "trap/trap_dest_info.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace talvik {

/// The trap destinations in a file, a `DurableDatabase` with the one table
///
///     destination(id, address, port, version, type, user_name)
///
/// A change that fails is a `SqliteError`. Used by one thread at a time.
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
    TrapDatabase(std::unique_ptr<DurableDatabase> database, Rows rows);

    void change(SqliteStatement& statement);

    const std::unique_ptr<DurableDatabase> database_;
    Rows rows_;
    SqliteStatement insert_;
    SqliteStatement update_;
    SqliteStatement erase_;
};

}  // namespace talvik
