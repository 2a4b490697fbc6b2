#pragma once

#include "tools/trap_destination.h"

#include <string>
#include <vector>

namespace talvik::ctl {

/// A list may not be longer: `talvikctl trap list --json` prints less than 3 MiB of a full table.
constexpr std::size_t kMaxTrapListBytes = std::size_t{4} << 20U;

/// The port of a destination that names none.
constexpr std::uint32_t kUsualTrapPort = 162;

/// The trap destinations of a list, in its order. JSON with no other members, as `talvikctl trap
/// list --json` prints it or written by hand:
///
///     list        ::= {"agent"?: TEXT, "destinations": [destination...]} | [destination...]
///     destination ::= "ADDRESS"
///                   | {"address": "ADDRESS", "port"?: 1..65535, "index"?: 1..2147483647,
///                      "version"?: "v1" | "v2c" | "v3", "versionCode"?: 1..3,
///                      "type"?: NAME, "typeCode"?: 1 | 2 | 3 | 7,
///                      "user"?: "1 to 32 octets", "usable"?: TEXT | null}
///
/// A name and its code must agree. "agent" and "usable" are not looked at, as agents decide them.
/// No two destinations have the same index. Those with the same address and port have an index
/// each.
///
/// Of what is returned, `port` is always there, `index` is 0 where the list has none, and `usable`
/// never is there. Throws `StartupError` that names `name`, the line, the place within the list and
/// what is allowed. `name` is what messages call the list.
std::vector<TrapDestination> parseTrapList(const std::string& text, const std::string& name);

/// What messages call a file: "-" is standard input.
std::string trapListName(const std::string& file);

/// The same of a file, or of standard input for "-".
std::vector<TrapDestination> loadTrapList(const std::string& file);

/// What names a receiver: texts of one address are the same, in whatever form they are written.
std::string receiverKey(const std::string& address, std::uint32_t port);

}  // namespace talvik::ctl
