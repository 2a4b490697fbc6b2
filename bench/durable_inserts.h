#pragma once

#include "bench/receiver_rows.h"

#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace talvik::bench {

/// The least that a durable list of trap destinations costs: SQLite alone, with the agent's
/// settings and table, one prepared insert a destination.
class DurableInserts {
public:
    /// Makes the database in `folder`. Failures of any call throw `std::runtime_error`.
    explicit DurableInserts(const std::string& folder);
    ~DurableInserts();

    DurableInserts(const DurableInserts&) = delete;
    DurableInserts& operator=(const DurableInserts&) = delete;

    /// On disk when this returns.
    void insert(const Receiver& row);

    /// Removes the destinations with an index above `last`.
    void removeBehind(unsigned last);

private:
    void run(const char* statement);
    void check(int code, int expected) const;

    sqlite3* database_ = nullptr;
    sqlite3_stmt* insert_ = nullptr;
    int logPages_ = 0;  ///< in the write-ahead log
};

}  // namespace talvik::bench
