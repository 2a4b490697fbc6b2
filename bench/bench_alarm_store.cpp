// The durable hand-over of alarms: raising one in the back end's store, with its notification, and
// acknowledging it, beside what SQLite alone needs for the same rows with the same settings.
#include "backend/alarm_store.h"
#include "bench/agent_process.h"
#include "host/platform/host_log.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace talvik::bench {

namespace {

constexpr unsigned kBlock = 64;  // alarms
constexpr unsigned kBlocks = 30;
constexpr unsigned kAcknowledged = 32;            // notifications that one acknowledgement covers
constexpr int kLongLog = 4 * 1024 * 1024 / 4120;  // pages with their headers, as in the back end
constexpr std::uint64_t kAlarm = 501010001;
constexpr std::uint32_t kLevel = 5;
constexpr std::uint64_t kTime = 1'790'000'000;
const std::string kParameters = "0,7,S3A1XK07,1";

constexpr const char* kInsertHistory =
    "INSERT INTO history VALUES(NULL, ?1, 1, 501010001, 5, 1790000000, 0, '', "
    "'0,7,S3A1XK07,1')";

using Seconds = std::chrono::duration<double>;

template <typename Work>
Seconds timeOf(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - start;
}

double medianMicroseconds(std::vector<Seconds> blocks)
{
    const auto middle = blocks.begin() + static_cast<std::ptrdiff_t>(blocks.size() / 2);
    std::nth_element(blocks.begin(), middle, blocks.end());
    return middle->count() * 1e6 / kBlock;
}

/// The rows of an alarm and its notification, by SQLite alone.
class BareTables {
public:
    explicit BareTables(const std::string& folder)
    {
        check(sqlite3_open((folder + "/alone.db").c_str(), &database_), SQLITE_OK);
        for (const char* statement :
             {"PRAGMA locking_mode=EXCLUSIVE", "PRAGMA journal_mode=WAL", "PRAGMA synchronous=FULL",
              "PRAGMA wal_autocheckpoint=0",
              "CREATE TABLE counter(id INTEGER PRIMARY KEY, last_serial INTEGER) STRICT",
              "CREATE TABLE active(serial INTEGER PRIMARY KEY, alarm_id INTEGER, level INTEGER, "
              "time INTEGER, parameters TEXT) STRICT",
              "CREATE TABLE history(position INTEGER PRIMARY KEY, serial INTEGER, kind INTEGER, "
              "alarm_id INTEGER, level INTEGER, time INTEGER, clear_time INTEGER, requester TEXT, "
              "parameters TEXT) STRICT",
              "CREATE TABLE outbox(sequence INTEGER PRIMARY KEY, record BLOB) STRICT",
              "INSERT INTO counter VALUES(1, 0)"}) {
            run(statement);
        }
        sqlite3_wal_hook(database_, &keepLogLength, &logPages_);
        for (const char* statement :
             {"BEGIN IMMEDIATE", "UPDATE counter SET last_serial = ?1",
              "INSERT INTO active VALUES(?1, 501010001, 5, 1790000000, '0,7,S3A1XK07,1')",
              kInsertHistory, "INSERT INTO outbox VALUES(?1, zeroblob(120))", "COMMIT"}) {
            raise_.push_back(prepared(statement));
        }
        acknowledge_ = prepared("DELETE FROM outbox WHERE sequence <= ?1");
    }

    ~BareTables()
    {
        for (auto* const statement : raise_) {
            sqlite3_finalize(statement);
        }
        sqlite3_finalize(acknowledge_);
        sqlite3_close(database_);
    }

    BareTables(const BareTables&) = delete;
    BareTables& operator=(const BareTables&) = delete;

    void raise()
    {
        if (logPages_ > kLongLog) {
            run("PRAGMA wal_checkpoint(TRUNCATE)");
            logPages_ = 0;
        }
        ++serial_;
        for (auto* const statement : raise_) {
            step(statement);
        }
    }

    void acknowledge() { step(acknowledge_); }

private:
    static int keepLogLength(void* logPages, sqlite3* /*database*/, const char* /*name*/, int pages)
    {
        *static_cast<int*>(logPages) = pages;
        return SQLITE_OK;
    }

    void run(const char* statement)
    {
        check(sqlite3_exec(database_, statement, nullptr, nullptr, nullptr), SQLITE_OK);
    }

    sqlite3_stmt* prepared(const char* text)
    {
        sqlite3_stmt* statement = nullptr;
        check(sqlite3_prepare_v2(database_, text, -1, &statement, nullptr), SQLITE_OK);
        return statement;
    }

    void step(sqlite3_stmt* statement)
    {
        if (sqlite3_bind_parameter_count(statement) != 0) {
            check(sqlite3_bind_int64(statement, 1, serial_), SQLITE_OK);
        }
        check(sqlite3_step(statement), SQLITE_DONE);
        check(sqlite3_reset(statement), SQLITE_OK);
    }

    void check(int code, int expected) const
    {
        if (code != expected) {
            throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(database_));
        }
    }

    sqlite3* database_ = nullptr;
    std::vector<sqlite3_stmt*> raise_;
    sqlite3_stmt* acknowledge_ = nullptr;
    std::int64_t serial_ = 0;
    int logPages_ = 0;
};

/// Raises in the store, and takes and acknowledges the notifications as the stream does.
class StoredAlarms {
public:
    explicit StoredAlarms(const std::string& folder) : store_(folder + "/alarms.db") {}

    void raise()
    {
        if (store_.raise({kAlarm, kLevel, kTime, kParameters}).code != 0) {
            throw std::runtime_error("the store took no alarm");
        }
    }

    void acknowledge()
    {
        constexpr std::size_t kOctets = 65536;
        const auto page = store_.nextNotifications(sent_, kAcknowledged, kOctets);
        if (page.size() != kAcknowledged) {
            throw std::runtime_error("the outbox lacks notifications");
        }
        sent_ = page.back().sequence;
        if (!store_.acknowledge(sent_)) {
            throw std::runtime_error("the store took no acknowledgement");
        }
    }

private:
    backend::AlarmStore store_;
    std::int64_t sent_ = 0;
};

template <typename Way>
void raiseBlock(Way& way)
{
    for (unsigned raised = 1; raised <= kBlock; ++raised) {
        way.raise();
        if (raised % kAcknowledged == 0) {
            way.acknowledge();
        }
    }
}

void run()
{
    LogSettings quiet;
    quiet.level = "error";
    configureLog(quiet);
    const WorkFolder folder;
    StoredAlarms stored(folder.path());
    BareTables bare(folder.path());
    std::vector<Seconds> throughTheStore;
    std::vector<Seconds> sqliteAlone;
    for (unsigned block = 0; block < kBlocks; ++block) {
        throughTheStore.push_back(timeOf([&] { raiseBlock(stored); }));
        sqliteAlone.push_back(timeOf([&] { raiseBlock(bare); }));
    }
    const double store = medianMicroseconds(throughTheStore);
    const double sqlite = medianMicroseconds(sqliteAlone);
    std::printf("an alarm raised and its notification acknowledged, durably, in turns of %u: %.0f "
                "us, SQLite alone %.0f us, %.2f of it\n",
                kBlock, store, sqlite, store / sqlite);
}

}  // namespace

}  // namespace talvik::bench

const std::string kCommonOption = "--benchmark";

int main(int argc, char** argv)
{
    for (int at = 1; at < argc; ++at) {
        // ./dev bench hands every program the same options.
        if (std::string(argv[at]).compare(0, kCommonOption.size(), kCommonOption) != 0) {
            std::fprintf(stderr, "talvik-bench-alarm-store: unknown option %s; it takes none\n",
                         argv[at]);
            return 2;
        }
    }
    try {
        talvik::bench::run();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "talvik-bench-alarm-store: %s\n", error.what());
        return 1;
    }
}
