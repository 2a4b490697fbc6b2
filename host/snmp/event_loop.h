#pragma once

namespace talvik {

/// Serves net-snmp's sessions, timers and delegated requests until `stopFd` can be read.
void serveUntilReadable(int stopFd);

}  // namespace talvik
