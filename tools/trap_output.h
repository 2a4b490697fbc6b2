#pragma once

#include "tools/failure.h"
#include "tools/text_table.h"
#include "tools/trap_destination.h"

#include <json/json.h>

#include <string>
#include <vector>

namespace talvik::ctl {

/// A table for people, header and rows by index; "no trap destinations" when there are none.
std::string trapTableText(const std::vector<TrapDestination>& destinations,
                          const TableStyle& style = {});

/// {"index", "address", "port", "version", "versionCode", "type", "typeCode", "user", "usable"}, as
/// below.
Json::Value trapJson(const TrapDestination& row);

/// {"agent", "destinations": [{"index", "address", "port", "version", "versionCode", "type",
/// "typeCode", "user", "usable"}]}: null for what the agent does not show, and for "usable" while a
/// name does not resolve.
Json::Value trapTableJson(const std::string& agent,
                          const std::vector<TrapDestination>& destinations);

/// {"reason", "advice"}.
Json::Value failureJson(const Failure& failure);

/// The line for people: reason and advice.
std::string failureText(const Failure& failure);

/// `value` with a line feed at its end; ASCII only.
std::string jsonText(const Json::Value& value);

/// The same in one line.
std::string jsonLine(const Json::Value& value);

}  // namespace talvik::ctl
