#pragma once

#include "host/snmp/object_id.h"

#include <string>
#include <vector>

namespace talvik::bench {

/// A value of a table, as net-snmp keeps it: a BER type and the octets of its own representation.
struct TableCell {
    unsigned char type;
    std::string octets;

    static TableCell ofNumber(unsigned char type, long number);
    static TableCell ofText(const std::string& text);
};

/// Cells of the columns 1, 2, ... in turn.
struct TableRow {
    unsigned long index;
    std::vector<TableCell> cells;
};

/// The rows of a table with one number as its index, for an agent that only serves them.
struct TableRows {
    ObjectId table;
    unsigned char indexType;
    std::vector<TableRow> rows;
};

/// Writes `rows` for `readRows` of the same program. Throws `std::runtime_error` when it cannot.
void writeRows(const std::string& path, const TableRows& rows);

/// What `writeRows` wrote to `path`. Throws a `std::exception` when it cannot be read.
TableRows readRows(const std::string& path);

}  // namespace talvik::bench
