#pragma once

#include "host/loop_watcher.h"

#include <vector>

namespace talvik {

/// Serves net-snmp's sessions, timers and delegated requests, and each of `watchers` in turn, until
/// `stopFd` can be read. Every round serves the SNMP library once, so that a watcher with much to
/// do never keeps a request waiting. Throws `std::system_error` when the system no longer lets it
/// wait.
void serveUntilReadable(int stopFd, const std::vector<LoopWatcher*>& watchers = {});

}  // namespace talvik
