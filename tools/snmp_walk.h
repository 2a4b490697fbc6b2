#pragma once

#include "tools/snmp_request.h"

#include <cstdint>
#include <map>
#include <vector>

namespace talvik::ctl {

/// A row's cells by column.
using TableRow = std::map<std::uint32_t, SnmpCell>;

/// The rows of a table whose index is one number, by index. `entry` is the object that the columns
/// hang below. GETBULK where the version has it; all columns go side by side, so a row's cells
/// mostly come from one answer. A cell that the agent does not show is missing in its row. Throws
/// `Failure`, also for an agent whose answers do not go forward or that never comes to an end.
std::map<std::uint32_t, TableRow> walkTable(SnmpRequester& requester, const ObjectId& entry,
                                            const std::vector<std::uint32_t>& columns);

}  // namespace talvik::ctl
