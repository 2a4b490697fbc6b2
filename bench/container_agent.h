#pragma once

#include "bench/table_rows.h"

namespace talvik::bench {

/// The reference for walks: a net-snmp agent that keeps `rows`, at least one, in the library's own
/// table container and serves them on the loopback's `port` to the community "bench". Its files lie
/// in `folder`. Returns never.
[[noreturn]] void serveContainer(unsigned port, const TableRows& rows, const char* folder);

}  // namespace talvik::bench
