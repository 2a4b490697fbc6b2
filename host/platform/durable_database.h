#pragma once

#include "host/platform/database_files.h"
#include "host/platform/sqlite_database.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace talvik {

/// What a database file holds, and how messages speak of it.
struct DatabaseFormat {
    std::string content;         ///< with its article: "the alarms"
    std::string program;         ///< who has it open: "the back end"
    std::int64_t applicationId;  ///< what file(1) shows of it
    std::int64_t version;        ///< counts up when an older release cannot read it
    std::vector<std::string>
        tables;  ///< the statements that make them, which SQLite keeps as they are
    std::vector<std::string> rows;  ///< the statements that enter what a new file begins with
    std::int64_t maxSize;           ///< octets; the file never grows beyond
};

/// An SQLite database in write-ahead mode that no other process can use at the same time. Each
/// change is a transaction, on disk when its call returns; one that fails leaves nothing behind.
/// Used by one thread at a time.
class DurableDatabase {
public:
    /// In place of a path: a database that lasts as long as the object, for tests and trials.
    static constexpr const char* kInMemory = ":memory:";

    /// Opens `path`, or makes it. `verify` looks at the content before anything is written; it may
    /// throw `DamagedFile`. Throws `DamagedFile` for content that is none of this format; the file
    /// and its log are then as they were. Throws `StartupError` when the file cannot be used
    /// although its content may be whole.
    static std::unique_ptr<DurableDatabase>
    open(const std::string& path, const DatabaseFormat& format,
         const std::function<void(SqliteDatabase&)>& verify);

    /// For statements. What changes something belongs into `change`.
    SqliteDatabase& connection() { return *database_; }

    /// Runs `work` as one change. A failure of SQLite is a `SqliteError`; whatever leaves `work`
    /// undoes it too.
    void change(const std::function<void()>& work);

private:
    DurableDatabase(std::unique_ptr<SqliteDatabase> database, std::optional<FileIdentity> log,
                    std::string program);

    void begin();
    void undoFailed();
    void tidyLog();

    std::unique_ptr<SqliteDatabase> database_;
    const std::optional<FileIdentity> log_;  ///< none in memory
    const std::string program_;
    bool logIsTidy_ = false;
    /// Where the log ended before a change that failed and is still to be taken off it.
    std::optional<std::int64_t> failedFrom_;
};

}  // namespace talvik
