#pragma once

#include "tools/failure.h"
#include "tools/snmp_settings.h"

#include <string>

namespace talvik::ctl {

/// An open session of the library, as its single-session calls take it.
struct OpenSession {
    void* handle = nullptr;
    long version = 0;  ///< the library's number of the protocol version
};

/// Opens the session that `settings` and snmp.conf ask for. Throws as `SnmpClient` does.
OpenSession openSession(const SnmpSettings& settings);

/// What the library's error means for the user. `detail` is the library's own text.
Failure connectionFailure(const SnmpSettings& settings, long version, int libraryError,
                          const std::string& detail);

}  // namespace talvik::ctl
