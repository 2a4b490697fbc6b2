#pragma once

#include "tools/failure.h"
#include "tools/snmp_request.h"

#include <cstdint>
#include <string>

namespace talvik::ctl {

/// Columns of the trap destinations.
namespace trap_column {
constexpr std::uint32_t kUsable = 1;
constexpr std::uint32_t kPort = 2;
constexpr std::uint32_t kRowStatus = 3;
constexpr std::uint32_t kIndex = 4;
constexpr std::uint32_t kVersion = 5;
constexpr std::uint32_t kAddress = 6;
constexpr std::uint32_t kType = 7;
constexpr std::uint32_t kUser = 8;
}  // namespace trap_column

/// The name of one cell: the column of the row with that index.
ObjectId trapCellName(std::uint32_t column, std::uint32_t index);

/// The object below which the columns hang.
const ObjectId& trapEntry();

/// There is no such row.
Failure unknownRow(const std::string& agent, std::uint32_t index);

/// The agent has no table of trap destinations, or does not show it.
Failure missingTable(const std::string& agent);

/// Over SNMPv1 the agent shows no row at all: the table may be empty, hidden or absent.
Failure nothingShown(const std::string& agent, std::uint32_t index);

/// No answer came to a SET that was sent.
Failure perhapsDone(const Failure& noAnswer);

/// What it means that the agent refused to `action` the trap destination `index`: `answer` is what
/// it said to the SET of `cells`.
Failure refusal(const SnmpRequester& requester, const std::string& action, std::uint32_t index,
                const std::vector<SnmpCell>& cells, const SnmpAnswer& answer);

}  // namespace talvik::ctl
