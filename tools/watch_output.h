#pragma once

#include "tools/output_options.h"
#include "tools/watcher.h"

#include <string>
#include <vector>

namespace talvik::ctl {

/// A change in a line for people: the time first.
std::string changeText(const Change& change, std::uint64_t time, const TableStyle& style);

/// A change as a JSON object in a line: {"time", "event", "what": "alarms" or "traps"} and, by its
/// event: "active", "raised" and "cleared" have "alarm" as `activeAlarmJson`; "receiver",
/// "receiver-added", "receiver-changed" and "receiver-removed" have "receiver" as `receiverJson`,
/// and "receiver-changed" has "counted": {"sent", "failed", "answered", "givenUp"} since the look
/// before; "away" has "reason" and "advice"; "back" has nothing else.
std::string changeJson(const Change& change, std::uint64_t time);

/// What a terminal of `rows` lines shows after a look. The alarms with the greatest serial numbers
/// are shown if there is no room for all.
std::string watchPicture(const Look& look, const std::vector<Change>& changes,
                         const TableStyle& style, std::size_t rows);

}  // namespace talvik::ctl
