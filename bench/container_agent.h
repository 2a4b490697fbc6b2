#pragma once

namespace talvik::bench {

/// The reference for walks: a net-snmp agent that keeps `rows` trap destinations in the library's
/// own table container and serves them on the loopback's `port` to the community "bench", with the
/// same object identifiers and values. Returns never.
[[noreturn]] void serveContainer(unsigned port, unsigned rows, const char* folder);

}  // namespace talvik::bench
