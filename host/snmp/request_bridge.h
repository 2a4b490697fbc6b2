#pragma once

#include "host/snmp/table_source.h"

#include <memory>
#include <vector>

namespace talvik {

/// Answers SNMP requests from tables: one registration with net-snmp's agent library a table. A
/// request sees one snapshot of each table, taken when it first touches it. A SET changes one row
/// of a table that has a RowStatus, all or nothing (`set_transaction.h`); for the others net-snmp
/// answers it with notWritable by itself. It repeats GETNEXT for a GETBULK, so that views are
/// checked for every variable.
class RequestBridge {
public:
    RequestBridge();

    /// Takes the tables out of the agent again, then deletes their handlers.
    ~RequestBridge();

    RequestBridge(const RequestBridge&) = delete;
    RequestBridge& operator=(const RequestBridge&) = delete;

    /// Serves `source`. Call it between the library's `init_agent` and `init_snmp`. Throws
    /// `StartupError` when its OID is taken.
    void serve(std::unique_ptr<TableSource> source);

private:
    class Subtree;

    std::vector<std::unique_ptr<Subtree>> subtrees_;
};

}  // namespace talvik
