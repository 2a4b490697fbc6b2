#pragma once

#include "tools/output_options.h"
#include "tools/watcher.h"

#include <string>
#include <vector>

namespace talvik::ctl {

/// A change for people, without its time.
std::string changeLine(const Change& change, const TableStyle& style);

/// The same with the time first, folded where a line does not fit.
std::string changeText(const Change& change, std::uint64_t time, const TableStyle& style);

/// A change as a JSON object in a line: {"time", "event", "what": "alarms" or "traps"} and, by its
/// event: "active", "raised" and "cleared" have "alarm" as `activeAlarmJson`; "receiver",
/// "receiver-added", "receiver-changed" and "receiver-removed" have "receiver" as `receiverJson`,
/// and "receiver-changed" has "counted": {"sent", "failed", "answered", "givenUp"} since the look
/// before; "away" has "reason" and "advice"; "back" has nothing else.
std::string changeJson(const Change& change, std::uint64_t time);

}  // namespace talvik::ctl
