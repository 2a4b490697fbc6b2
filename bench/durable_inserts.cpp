#include "bench/durable_inserts.h"

#include <sqlite3.h>

#include <stdexcept>

namespace talvik::bench {

namespace {

constexpr const char* kTable = "CREATE TABLE trap_destination (id INTEGER PRIMARY KEY, "
                               "address TEXT NOT NULL, port INTEGER NOT NULL, version INTEGER NOT "
                               "NULL, type INTEGER NOT NULL, user TEXT NOT NULL) STRICT";
constexpr int kLongLog = 4 * 1024 * 1024 / 4120;  // pages with their headers

int keepLogLength(void* logPages, sqlite3*, const char*, int pages)
{
    *static_cast<int*>(logPages) = pages;
    return SQLITE_OK;
}

}  // namespace

DurableInserts::DurableInserts(const std::string& folder)
{
    check(sqlite3_open((folder + "/alone.db").c_str(), &database_), SQLITE_OK);
    for (const char* statement :
         {"PRAGMA locking_mode=EXCLUSIVE", "PRAGMA journal_mode=WAL", "PRAGMA synchronous=FULL",
          "PRAGMA wal_autocheckpoint=0", kTable}) {
        run(statement);
    }
    sqlite3_wal_hook(database_, &keepLogLength, &logPages_);
    check(sqlite3_prepare_v2(database_, "INSERT INTO trap_destination VALUES (?, ?, ?, ?, ?, ?)",
                             -1, &insert_, nullptr),
          SQLITE_OK);
}

DurableInserts::~DurableInserts()
{
    sqlite3_finalize(insert_);
    sqlite3_close(database_);
}

void DurableInserts::insert(const Receiver& row)
{
    if (logPages_ > kLongLog) {  // as the agent does
        run("PRAGMA wal_checkpoint(TRUNCATE)");
        logPages_ = 0;
    }
    sqlite3_bind_int64(insert_, 1, row.index);
    sqlite3_bind_text(insert_, 2, row.address.data(), static_cast<int>(row.address.size()),
                      SQLITE_STATIC);
    sqlite3_bind_int64(insert_, 3, row.port);
    sqlite3_bind_int64(insert_, 4, row.version);
    sqlite3_bind_int64(insert_, 5, row.type);
    sqlite3_bind_text(insert_, 6, row.user.data(), static_cast<int>(row.user.size()),
                      SQLITE_STATIC);
    check(sqlite3_step(insert_), SQLITE_DONE);
    check(sqlite3_reset(insert_), SQLITE_OK);
}

void DurableInserts::removeBehind(unsigned last)
{
    run(("DELETE FROM trap_destination WHERE id > " + std::to_string(last)).c_str());
}

void DurableInserts::run(const char* statement)
{
    check(sqlite3_exec(database_, statement, nullptr, nullptr, nullptr), SQLITE_OK);
}

void DurableInserts::check(int code, int expected) const
{
    if (code != expected) {
        throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(database_));
    }
}

}  // namespace talvik::bench
